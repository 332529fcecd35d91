#include "app/Watch/JsonLine.h"

#include "app/Watch/JsonText.h"
#include "core/Diagnosis/HopSamples.h"

#include <chrono>
#include <concepts>

namespace tarnwick {

namespace {

const char* caseName(ConnectionWatchdog::Status status) {
    switch (status) {
    case ConnectionWatchdog::Status::starting:
        return "starting";
    case ConnectionWatchdog::Status::up:
        return "up";
    case ConnectionWatchdog::Status::down:
        break;
    }
    return "down";
}

const char* caseName(QualityTone tone) {
    switch (tone) {
    case QualityTone::neutral:
        return "neutral";
    case QualityTone::good:
        return "good";
    case QualityTone::middle:
        return "middle";
    case QualityTone::bad:
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

void addVerdict(JsonText& line, const Reading& reading) {
    line.add("status", caseName(reading.status));
    line.add(
        "pausedUntil", reading.pausedUntil ? std::optional(timestamp(*reading.pausedUntil)) : std::nullopt);
    line.add("score", reading.score);
    line.add("bars", reading.bars);
    line.add("latestPingMs", reading.latestPingMs);
    line.add("lossPercent", reading.lossPercent);
    line.add("lossIsKnown", reading.lossIsKnown);
}

void addTexts(JsonText& line, const Reading& reading, const std::string& menuTitle) {
    line.add("menuTitle", menuTitle);
    line.add("tooltip", reading.tooltip);
    line.add("qualityTitle", reading.qualityTitle);
    line.add("qualityTone", caseName(reading.qualityTone));
}

void addReasons(JsonText& line, const Reading& reading) {
    if (reading.downReason) {
        line.add("downReason", caseName(reading.downReason->kind));
        line.add("downReasonText", reading.downReasonText);
    } else {
        line.addNull("downReason");
        line.addNull("downReasonText");
    }
    for (const char* key : {"lastError", "startError"}) {
        line.add(key, reading.lastError());
    }
}

void addDiagnosis(JsonText& line, const Reading& reading) {
    if (reading.verdict) {
        line.add("verdict", nameOf(reading.verdict->blame));
        line.add("likelihood", nameOf(reading.verdict->likelihood));
        line.add("evidence", reading.verdict->evidence);
    } else {
        for (const char* key : {"verdict", "likelihood", "evidence"}) {
            line.addNull(key);
        }
    }
    line.beginList("path");
    for (const HopEvidence& hop : reading.path) {
        line.beginItem();
        line.add("address", hop.address.empty() ? std::nullopt : std::optional(hop.address));
        line.add("name", hop.name.empty() ? std::nullopt : std::optional(hop.name));
        line.add("isHost", hop.isHost);
        line.add("loss", lostShare(hop.samples));
        line.add("latestMs", latestMs(hop.samples));
        line.add("quietMs", hop.quietMs);
        line.endObject();
    }
    line.endList();
}

std::vector<std::string> linesOf(const Notices& notices) {
    std::vector<std::string> lines;
    for (const Notice& notice : notices) {
        lines.push_back(notice.line());
    }
    return lines;
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

std::string jsonLine(
    const Reading& reading, RunLoop::WallTime time, double judgedAt, const std::string& menuTitle) {
    JsonText line;
    line.add("time", timestamp(time));
    line.add("monotonic", judgedAt);
    line.add("host", reading.host);
    line.add("resolvedAddress", reading.resolvedAddress);
    addVerdict(line, reading);
    addTexts(line, reading, menuTitle);
    addReasons(line, reading);
    addDiagnosis(line, reading);
    line.add("accessibilitySummary", reading.accessibilitySummary);
    addCounter(line, "session", reading.session);
    addCounter(line, "site", reading.site);
    line.add("samples", reading.samples);
    line.add("notices", linesOf(reading.notices));
    return line.take() + "\n";
}

} // namespace tarnwick
