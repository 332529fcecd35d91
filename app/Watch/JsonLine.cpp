#include "app/Watch/JsonLine.h"

#include "app/Watch/JsonText.h"

#include <chrono>
#include <concepts>

namespace tarnwick {

namespace {

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

void addCounter(JsonText& line, const char* key, const StatCounter& counter) {
    line.beginObject(key);
    line.add("sent", counter.sent);
    line.add("replied", counter.replied);
    line.add("lost", counter.lost);
    line.add("averageMs", counter.averageMs);
    line.add("fastestMs", counter.fastestMs);
    line.add("slowestMs", counter.slowestMs);
    line.endObject();
}

void addVerdict(JsonText& line, const Monitor& monitor) {
    line.add("status", caseName(monitor.status()));
    line.add("score", monitor.score());
    line.add("bars", monitor.bars());
    line.add("latestPingMs", monitor.latestPingMs());
    line.add("lossPercent", monitor.lossPercent());
    line.add("lossIsKnown", monitor.lossIsKnown());
}

void addTexts(JsonText& line, const Monitor& monitor, const std::string& menuTitle) {
    line.add("menuTitle", menuTitle);
    line.add("tooltip", monitor.tooltip());
    line.add("qualityTitle", monitor.qualityTitle());
    line.add("qualityTone", caseName(monitor.qualityTone()));
}

void addReasons(JsonText& line, const Monitor& monitor) {
    const std::optional<DownReason> reason = monitor.downReason();
    const std::optional<PingError>& startError = monitor.startError();
    if (reason) {
        line.add("downReason", caseName(reason->kind));
    } else {
        line.addNull("downReason");
    }
    if (monitor.status() == Monitor::Status::down) {
        line.add("downReasonText", monitor.downReasonText());
    } else {
        line.addNull("downReasonText");
    }
    line.add("lastError", monitor.lastError());
    if (startError) {
        line.add("startError", startError->message());
    } else {
        line.addNull("startError");
    }
}

/// Over the `count` characters at `position`; further digits to the left are left out.
void putDigits(std::string& text, std::size_t position, std::size_t count, std::integral auto number) {
    for (std::size_t place = position + count; place > position; --place) {
        text[place - 1] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
}

} // namespace

std::string timestamp(RunLoop::WallTime time) {
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(time);
    const auto days = std::chrono::floor<std::chrono::days>(milliseconds);
    const std::chrono::year_month_day date(days);
    const std::chrono::hh_mm_ss clock(milliseconds - days);
    std::string text = "0000-00-00T00:00:00.000Z";
    putDigits(text, 0, 4, static_cast<int>(date.year()));
    putDigits(text, 5, 2, static_cast<unsigned>(date.month()));
    putDigits(text, 8, 2, static_cast<unsigned>(date.day()));
    putDigits(text, 11, 2, clock.hours().count());
    putDigits(text, 14, 2, clock.minutes().count());
    putDigits(text, 17, 2, clock.seconds().count());
    putDigits(text, 20, 3, clock.subseconds().count());
    return text;
}

std::string jsonLine(const Monitor& monitor, RunLoop::WallTime time, const std::string& menuTitle) {
    JsonText line;
    line.add("time", timestamp(time));
    line.add("monotonic", monitor.evaluatedAt());
    line.add("host", monitor.prefs().hostname());
    line.add("resolvedAddress", monitor.resolvedAddress());
    addVerdict(line, monitor);
    addTexts(line, monitor, menuTitle);
    addReasons(line, monitor);
    line.add("accessibilitySummary", monitor.accessibilitySummary());
    addCounter(line, "session", monitor.ledger().session());
    addCounter(line, "site", monitor.ledger().site());
    line.add("samples", monitor.samples().size());
    return line.take() + "\n";
}

} // namespace tarnwick
