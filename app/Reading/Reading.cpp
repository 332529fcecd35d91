#include "app/Reading/Reading.h"

#include "app/Reading/Format.h"
#include "core/QualityScorer.h"
#include "core/Text.h"

#include <cmath>

namespace tarnwick {

namespace {

constexpr std::string_view noValue = "–";

std::string qualityTitle(const Reading& reading, bool isConnecting) {
    if (reading.pausedUntil) {
        return "Paused until " + Format::timeOfDay(*reading.pausedUntil);
    }
    if (isConnecting) {
        return "Connecting…";
    }
    if (reading.isDown()) {
        return "Connection down";
    }
    switch (reading.bars) {
    case 5:
        return "Excellent";
    case 4:
        return "Good";
    case 3:
        return "Fair";
    case 2:
        return "Poor";
    default:
        return "Very poor";
    }
}

QualityTone qualityTone(const Reading& reading, bool isConnecting) {
    if (isConnecting) {
        return QualityTone::neutral;
    }
    if (reading.bars >= 4) {
        return QualityTone::good;
    }
    return reading.bars >= 2 ? QualityTone::middle : QualityTone::bad;
}

std::string hostNotFoundText(const std::string& host) {
    // Only an IPv6 address has a percent sign, and only its interface can be missing.
    const std::size_t percent = host.find('%');
    return percent != std::string::npos ? "There is no interface “" + host.substr(percent + 1) + "”"
                                        : "Can’t find host “" + host + "”";
}

std::string downReasonText(const std::optional<DownReason>& reason, const ReadingSettings& settings) {
    switch (reason ? reason->kind : DownReason::Kind::noReplies) {
    case DownReason::Kind::hostNotFound:
        return hostNotFoundText(settings.hostname);
    case DownReason::Kind::noNetwork:
        return "No network connection";
    case DownReason::Kind::socketError:
        return "Can’t open a ping socket";
    case DownReason::Kind::noReplies:
        break;
    }
    const auto config = ConnectionWatchdog::Config::original(settings.pingTimeout, settings.pingInterval);
    return "No replies for " + Text::whole(std::trunc(config.replyTimeout)) + " s";
}

std::string hostLine(const Reading& reading) {
    if (reading.isDown()) {
        return reading.downReasonText;
    }
    const std::optional<std::string>& address = reading.resolvedAddress;
    return address && *address != reading.host ? reading.host + " · " + *address : reading.host;
}

std::string latencyText(const Reading& reading) {
    if (reading.isDown()) {
        return "Down";
    }
    return reading.latestPingMs ? Format::wholeMs(*reading.latestPingMs) : std::string(noValue);
}

std::string tooltip(const Reading& reading) {
    std::string text = "Latest Ping Time: ";
    text += reading.latestPingMs ? Text::whole(*reading.latestPingMs) + "ms" : noValue;
    text += "\nRecent Packet Loss: ";
    text += reading.lossIsKnown ? Text::whole(reading.lossPercent) + "%" : noValue;
    return text;
}

std::string accessibilitySummary(const Reading& reading, bool isConnecting) {
    if (reading.isDown()) {
        return "Connection down, " + reading.downReasonText;
    }
    if (reading.isPaused()) {
        return reading.qualityTitle;
    }
    if (!reading.latestPingMs || isConnecting) {
        return "Connecting";
    }
    std::string text = reading.qualityTitle + ", " + Text::whole(*reading.latestPingMs) + " milliseconds";
    if (reading.lossIsKnown) {
        text += ", " + Text::whole(reading.lossPercent) + " percent packet loss";
    }
    return text;
}

/// The fields that are copies of a measurement or a setting.
Reading copied(const Measurements& measured, const ReadingSettings& settings) {
    Reading reading;
    reading.status = measured.status;
    reading.pausedUntil = measured.pausedUntil;
    reading.score = measured.score;
    reading.verdict = measured.verdict;
    reading.path = measured.path;
    reading.host = settings.hostname;
    reading.resolvedAddress = measured.resolvedAddress;
    reading.startError = measured.startError;
    reading.pathSatisfied = measured.pathSatisfied;
    reading.latestPingMs = measured.latestPingMs;
    reading.lossPercent = measured.lossPercent;
    reading.lossIsKnown = measured.lossIsKnown;
    reading.lossTextMode = settings.lossTextMode;
    reading.session = measured.ledger.session();
    reading.site = measured.ledger.site();
    reading.samples = measured.samples.size();
    reading.recording = measured.recording;
    reading.notices = noticesOf(measured);
    return reading;
}

} // namespace

std::string Reading::menuTitle(bool withLoss) const {
    if (isDown()) {
        return std::string(MenuBarTitle::failed);
    }
    if (isPaused()) {
        return std::string(MenuBarTitle::paused);
    }
    if (!latestPingMs) {
        return std::string(MenuBarTitle::waiting);
    }
    return MenuBarTitle::title(*latestPingMs, withLoss ? knownLoss() : std::nullopt);
}

std::string Reading::figure() const {
    if (isDown()) {
        return {};
    }
    if (isPaused()) {
        return std::string(MenuBarTitle::pauseSign);
    }
    return latestPingMs ? MenuBarTitle::figure(*latestPingMs) : std::string(MenuBarTitle::waiting);
}

Reading makeReading(
    const Measurements& measured, const ReadingSettings& settings, RunLoop::WallTime wallTime) {
    Reading reading = copied(measured, settings);
    const bool isConnecting = reading.status == ConnectionWatchdog::Status::starting && !reading.score;
    if (!reading.isDown() && reading.score) {
        reading.bars = QualityScorer::bars(*reading.score, barLevels);
    }
    if (reading.isDown()) {
        reading.downReason = DownReason::from(reading.startError, reading.pathSatisfied);
    }
    // In this order: later texts contain earlier ones.
    reading.showsLoss = reading.lossIsKnown && !isConnecting;
    if (reading.showsLoss && !reading.isDown()) {
        reading.lossText = Text::whole(reading.lossPercent) + "% loss";
    }
    reading.qualityTitle = qualityTitle(reading, isConnecting);
    reading.qualityTone = qualityTone(reading, isConnecting);
    reading.downReasonText = downReasonText(reading.downReason, settings);
    reading.hostLine = hostLine(reading);
    reading.latencyText = latencyText(reading);
    reading.tooltip = tooltip(reading);
    reading.accessibilitySummary = accessibilitySummary(reading, isConnecting);
    reading.chart = {
        .buckets = LatencyChart::buckets(measured.samples, wallTime, settings.pingInterval),
        .lowThresholdMs = settings.slowPingThresholdMs,
        .highThresholdMs = settings.slowPingThresholdMs + ScoringConfig::thresholdSpanMs,
    };
    return reading;
}

std::string Reading::itemToolTip() const {
    std::string text = tooltip;
    if (isDown()) {
        const std::optional<std::string> error = lastError();
        text = error ? downReasonText + "\n" + *error : downReasonText;
    } else if (isPaused()) {
        text = qualityTitle;
    }
    return verdict ? text + "\n" + verdict->evidence : text;
}

} // namespace tarnwick
