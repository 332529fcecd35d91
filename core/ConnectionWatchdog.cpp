#include "core/ConnectionWatchdog.h"

#include <algorithm>

namespace tarnwick {

ConnectionWatchdog::Config ConnectionWatchdog::Config::original(double timeout, double pingInterval) {
    const double replyTimeout = timeout + std::max(2 * pingInterval, std::min(4 * pingInterval, 60.0));
    return {
        .replyTimeout = replyTimeout,
        .maxSilence = replyTimeout + 12,
        .grace = 10,
        .retryDelay = 2,
        .minRestartInterval = 2,
        .maxRestartInterval = std::max(pingInterval, 15.0),
        .resolutionTimeout = 10,
    };
}

ConnectionWatchdog::ConnectionWatchdog(const Config& config, double now)
    : config_(config), episodeStart_(now), graceUntil_(now + config.grace) {
}

ConnectionWatchdog::Actions ConnectionWatchdog::reset(double now, double restartAfter, bool newHost) {
    status_ = Status::starting;
    isResolving_ = false;
    episodeStart_ = now;
    pingingSince_.reset();
    graceUntil_ = now + config_.grace;
    lastRestart_.reset();
    restartDue_ = now + restartAfter;
    if (newHost) {
        confirmed_ = false;
        downAnnounced_ = false;
    }
    return tick(now);
}

void ConnectionWatchdog::pingingStarted(double now) {
    isResolving_ = false;
    lastRestart_ = now;
    if (!pingingSince_) {
        pingingSince_ = now;
    }
}

ConnectionWatchdog::Actions ConnectionWatchdog::startFailed(double now) {
    Actions actions;
    isResolving_ = false;
    lastRestart_ = now;
    if (status_ == Status::down) {
        return actions;
    }
    if (now < graceUntil_) {
        scheduleRestartNoLaterThan(now + config_.retryDelay);
    } else {
        goDown(actions);
    }
    return actions;
}

ConnectionWatchdog::Actions ConnectionWatchdog::replyReceived(double now) {
    Actions actions;
    lastReplyAt_ = now;
    confirmed_ = true;
    if (status_ == Status::down) {
        restartDue_.reset();
    }
    status_ = Status::up;
    // With alerts off too: turning them on later must not announce an old recovery.
    if (downAnnounced_) {
        downAnnounced_ = false;
        if (alertsEnabled_) {
            actions.push_back(Action::announceUp);
        }
    }
    return actions;
}

ConnectionWatchdog::Actions ConnectionWatchdog::networkChanged(double now) {
    graceUntil_ = std::max(graceUntil_, now + config_.grace);
    const double earliest = lastRestart_ ? *lastRestart_ + config_.minRestartInterval : now;
    scheduleRestartNoLaterThan(std::max(now, earliest));
    return tick(now);
}

void ConnectionWatchdog::heldUp(double now) {
    episodeStart_ = now;
    graceUntil_ = std::max(graceUntil_, now + config_.grace);
    if (isResolving_) {
        lastRestart_ = now;
    }
}

ConnectionWatchdog::Actions ConnectionWatchdog::tick(double now) {
    Actions actions;
    giveUpStalledStart(now, actions);
    if (status_ != Status::down && isTooSilent(now)) {
        goDown(actions);
    }
    const bool isRecovery = status_ == Status::down;
    if (isRecovery && !restartDue_ && !isResolving_) {
        restartDue_ = restartBackoff_ + lastRestart_.value_or(now);
    }
    restartIfDue(now, isRecovery, actions);
    return actions;
}

void ConnectionWatchdog::goDown(Actions& actions) {
    status_ = Status::down;
    restartBackoff_ = config_.replyTimeout;
    if (confirmed_ && alertsEnabled_ && !downAnnounced_) {
        downAnnounced_ = true;
        actions.push_back(Action::announceDown);
    }
}

void ConnectionWatchdog::scheduleRestartNoLaterThan(double time) {
    restartDue_ = std::min(time, restartDue_.value_or(time));
}

bool ConnectionWatchdog::isTooSilent(double now) const {
    const double reference = std::max(episodeStart_, lastReplyAt_.value_or(episodeStart_));
    if (pingingSince_ && now - std::max(*pingingSince_, reference) > config_.replyTimeout) {
        return true;
    }
    return now - reference > config_.maxSilence;
}

void ConnectionWatchdog::giveUpStalledStart(double now, Actions& actions) {
    if (!isResolving_ || !lastRestart_ || now - *lastRestart_ < config_.resolutionTimeout) {
        return;
    }
    actions.push_back(Action::startTimedOut);
    const Actions consequences = startFailed(now);
    actions.insert(actions.end(), consequences.begin(), consequences.end());
}

void ConnectionWatchdog::restartIfDue(double now, bool isRecovery, Actions& actions) {
    if (!restartDue_ || *restartDue_ > now || isResolving_) {
        return;
    }
    if (lastRestart_ && now - *lastRestart_ < config_.minRestartInterval) {
        restartDue_ = *lastRestart_ + config_.minRestartInterval;
        return;
    }
    actions.push_back(Action::restartPinger);
    isResolving_ = true;
    lastRestart_ = now;
    restartDue_.reset();
    if (isRecovery) {
        restartBackoff_ = std::min(2 * restartBackoff_, config_.maxRestartInterval);
    }
}

} // namespace tarnwick
