// The monitor's values for display, derived from what it publishes.
#include "app/Monitor/Monitor.h"

#include "core/MenuBarTitle.h"
#include "core/Text.h"

#include <cmath>

namespace tarnwick {

namespace {

constexpr std::string_view noValue = "–";

} // namespace

bool Monitor::isConnecting() const {
    return status() == Status::starting && !score();
}

int Monitor::bars() const {
    const std::optional<double> present = score();
    return status() != Status::down && present ? QualityScorer::bars(*present, barLevels) : 0;
}

std::optional<DownReason> Monitor::downReason() const {
    if (status() != Status::down) {
        return std::nullopt;
    }
    return DownReason::from(startError(), pathSatisfied());
}

std::string Monitor::menuTitle(bool showsLoss) const {
    if (status() == Status::down) {
        return std::string(MenuBarTitle::failed);
    }
    const std::optional<double> latest = latestPingMs();
    if (!latest) {
        return std::string(MenuBarTitle::waiting);
    }
    return MenuBarTitle::title(
        *latest, showsLoss && lossIsKnown() ? std::optional(lossPercent()) : std::nullopt);
}

std::string Monitor::tooltip() const {
    const std::optional<double> latest = latestPingMs();
    std::string text = "Latest Ping Time: ";
    text += latest ? Text::whole(*latest) + "ms" : noValue;
    text += "\nRecent Packet Loss: ";
    text += lossIsKnown() ? Text::whole(lossPercent()) + "%" : noValue;
    return text;
}

bool Monitor::showsLoss() const {
    return lossIsKnown() && !isConnecting();
}

std::string Monitor::qualityTitle() const {
    if (isConnecting()) {
        return "Connecting…";
    }
    if (status() == Status::down) {
        return "Connection down";
    }
    const std::optional<double> present = score();
    switch (present ? QualityScorer::bars(*present, barLevels) : 0) {
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

Monitor::QualityTone Monitor::qualityTone() const {
    if (isConnecting()) {
        return QualityTone::neutral;
    }
    const std::optional<double> present = score();
    if (status() == Status::down || !present) {
        return QualityTone::bad;
    }
    const int lit = QualityScorer::bars(*present, barLevels);
    if (lit >= 4) {
        return QualityTone::good;
    }
    return lit >= 2 ? QualityTone::middle : QualityTone::bad;
}

std::string Monitor::downReasonText() const {
    const std::optional<DownReason> reason = downReason();
    switch (reason ? reason->kind : DownReason::Kind::noReplies) {
    case DownReason::Kind::hostNotFound:
        return "Can’t find host “" + prefs_.hostname() + "”";
    case DownReason::Kind::noNetwork:
        return "No network connection";
    case DownReason::Kind::socketError:
        return "Can’t open a ping socket";
    case DownReason::Kind::noReplies:
        break;
    }
    const auto config = ConnectionWatchdog::Config::original(prefs_.pingTimeout(), prefs_.pingInterval());
    return "No replies for " + Text::whole(std::trunc(config.replyTimeout)) + " s";
}

std::string Monitor::accessibilitySummary() const {
    if (status() == Status::down) {
        return "Connection down, " + downReasonText();
    }
    const std::optional<double> latest = latestPingMs();
    if (!latest || isConnecting()) {
        return "Connecting";
    }
    std::string text = qualityTitle() + ", " + Text::whole(*latest) + " milliseconds";
    if (lossIsKnown()) {
        text += ", " + Text::whole(lossPercent()) + " percent packet loss";
    }
    return text;
}

} // namespace tarnwick
