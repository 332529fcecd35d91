#include "app/Watch/JsonLine.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>
#include <ctime>
#include <utility>

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

/// An object filled member by member: from an initializer list the library would copy every value.
class JsonObject {
public:
    explicit JsonObject(std::size_t members) { object_.get_ptr<Json::object_t*>()->reserve(members); }

    template<class Value>
    void add(const char* key, Value&& value) {
        object_.emplace(key, std::forward<Value>(value));
    }

    [[nodiscard]] Json take() { return std::move(object_); }

private:
    Json object_ = Json::object();
};

Json counterJson(const StatCounter& counter) {
    JsonObject object(6);
    object.add("sent", counter.sent);
    object.add("replied", counter.replied);
    object.add("lost", counter.lost);
    object.add("averageMs", counter.averageMs);
    object.add("fastestMs", counter.fastestMs);
    object.add("slowestMs", counter.slowestMs);
    return object.take();
}

void addVerdict(JsonObject& line, const Monitor& monitor) {
    line.add("status", caseName(monitor.status()));
    line.add("score", orNull(monitor.score()));
    line.add("bars", monitor.bars());
    line.add("latestPingMs", orNull(monitor.latestPingMs()));
    line.add("lossPercent", monitor.lossPercent());
    line.add("lossIsKnown", monitor.lossIsKnown());
}

void addTexts(JsonObject& line, const Monitor& monitor, const std::string& menuTitle) {
    line.add("menuTitle", menuTitle);
    line.add("tooltip", monitor.tooltip());
    line.add("qualityTitle", monitor.qualityTitle());
    line.add("qualityTone", caseName(monitor.qualityTone()));
}

void addReasons(JsonObject& line, const Monitor& monitor) {
    const bool isDown = monitor.status() == Monitor::Status::down;
    const std::optional<DownReason> reason = monitor.downReason();
    const std::optional<PingError>& startError = monitor.startError();
    line.add("downReason", reason ? Json(caseName(reason->kind)) : Json(nullptr));
    line.add("downReasonText", isDown ? Json(monitor.downReasonText()) : Json(nullptr));
    line.add("lastError", orNull(monitor.lastError()));
    line.add("startError", startError ? Json(startError->message()) : Json(nullptr));
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
    JsonObject line(22);
    line.add("time", timestamp(time));
    line.add("monotonic", monitor.evaluatedAt());
    line.add("host", monitor.prefs().hostname());
    line.add("resolvedAddress", orNull(monitor.resolvedAddress()));
    addVerdict(line, monitor);
    addTexts(line, monitor, menuTitle);
    addReasons(line, monitor);
    line.add("accessibilitySummary", monitor.accessibilitySummary());
    line.add("session", counterJson(monitor.ledger().session()));
    line.add("site", counterJson(monitor.ledger().site()));
    line.add("samples", monitor.samples().size());
    return line.take().dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace tarnwick
