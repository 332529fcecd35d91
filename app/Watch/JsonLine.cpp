#include "app/Watch/JsonLine.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>
#include <ctime>

namespace tarnwick {

namespace {

using Json = nlohmann::ordered_json;

template<class T>
Json orNull(const std::optional<T>& value) {
    return value ? Json(*value) : Json(nullptr);
}

const char* caseName(Monitor::Status status) {
    switch (status) {
    case Monitor::Status::starting:
        return "starting";
    case Monitor::Status::up:
        return "up";
    case Monitor::Status::down:
        break;
    }
    return "down";
}

const char* caseName(Monitor::QualityTone tone) {
    switch (tone) {
    case Monitor::QualityTone::neutral:
        return "neutral";
    case Monitor::QualityTone::good:
        return "good";
    case Monitor::QualityTone::middle:
        return "middle";
    case Monitor::QualityTone::bad:
        break;
    }
    return "bad";
}

const char* caseName(DownReason::Kind kind) {
    switch (kind) {
    case DownReason::Kind::socketError:
        return "socketError";
    case DownReason::Kind::hostNotFound:
        return "hostNotFound";
    case DownReason::Kind::noNetwork:
        return "noNetwork";
    case DownReason::Kind::noReplies:
        break;
    }
    return "noReplies";
}

Json counter(const StatCounter& counter) {
    return {
        {"sent", counter.sent},           {"replied", counter.replied},     {"lost", counter.lost},
        {"averageMs", counter.averageMs}, {"fastestMs", counter.fastestMs}, {"slowestMs", counter.slowestMs},
    };
}

} // namespace

std::string timestamp(RunLoop::WallTime time) {
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(time);
    const auto seconds = std::chrono::floor<std::chrono::seconds>(milliseconds);
    const std::time_t wholeSeconds = std::chrono::system_clock::to_time_t(seconds);
    std::tm parts{};
    gmtime_r(&wholeSeconds, &parts);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::array<char, 8> fraction{};
    std::snprintf(
        fraction.data(), fraction.size(), ".%03d", static_cast<int>((milliseconds - seconds).count()));
    return std::string(date.data()) + fraction.data() + "Z";
}

std::string jsonLine(const Monitor& monitor, RunLoop::WallTime time, const std::string& menuTitle) {
    const bool isDown = monitor.status() == Monitor::Status::down;
    const std::optional<DownReason> reason = monitor.downReason();
    const std::optional<PingError>& startError = monitor.startError();
    const PingLedger& ledger = monitor.ledger();
    const Json line{
        {"time", timestamp(time)},
        {"monotonic", monitor.evaluatedAt()},
        {"host", monitor.prefs().hostname()},
        {"resolvedAddress", orNull(monitor.resolvedAddress())},
        {"status", caseName(monitor.status())},
        {"score", orNull(monitor.score())},
        {"bars", monitor.bars()},
        {"latestPingMs", orNull(monitor.latestPingMs())},
        {"lossPercent", monitor.lossPercent()},
        {"lossIsKnown", monitor.lossIsKnown()},
        {"menuTitle", menuTitle},
        {"tooltip", monitor.tooltip()},
        {"qualityTitle", monitor.qualityTitle()},
        {"qualityTone", caseName(monitor.qualityTone())},
        {"downReason", reason ? Json(caseName(reason->kind)) : Json(nullptr)},
        {"downReasonText", isDown ? Json(monitor.downReasonText()) : Json(nullptr)},
        {"lastError", orNull(monitor.lastError())},
        {"startError", startError ? Json(startError->message()) : Json(nullptr)},
        {"accessibilitySummary", monitor.accessibilitySummary()},
        {"session", counter(ledger.session())},
        {"site", counter(ledger.site())},
        {"samples", monitor.samples().size()},
    };
    return line.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace tarnwick
