#include "platform/bus/DesktopNotificationCenter.h"

#include "platform/bus/NotificationDaemon.h"
#include "platform/bus/NotificationPortal.h"
#include "platform/ports/ApplicationId.h"

#include <cstdint>
#include <sstream>
#include <utility>

namespace tarnwick {

namespace {

std::unique_ptr<NotificationService> makeService(
    BusConnection& bus, DesktopNotificationCenter::Surroundings surroundings,
    const std::filesystem::path& iconFolder) {
    if (surroundings == DesktopNotificationCenter::Surroundings::sandbox) {
        // It knows the program's icon.
        return std::make_unique<NotificationPortal>(bus);
    }
    return std::make_unique<NotificationDaemon>(bus, iconFolder);
}

/// As name servers compare hosts: only these letters have a case.
char smallLetter(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// The bus name of the program that announces for this subject, a host in letters of either case. Such names
/// are short and of few letters: a hash of the subject serves.
std::string nameOf(const std::string& subject) {
    std::uint64_t hash = 0xcbf29ce484222325; // FNV-1a: the same in every version of the programs
    for (const char letter : subject) {
        hash = (hash ^ static_cast<unsigned char>(smallLetter(letter))) * 0x100000001b3;
    }
    std::ostringstream name;
    name << applicationId << ".Alerts.h" << std::hex << hash;
    return name.str();
}

} // namespace

DesktopNotificationCenter::DesktopNotificationCenter(
    RunLoop& loop, BusConnection& bus, Surroundings surroundings, const std::filesystem::path& iconFolder,
    double patience, NameClaim::Rank rank)
    : loop_(loop),
      bus_(bus),
      patience_(patience),
      rank_(rank),
      service_(makeService(bus, surroundings, iconFolder)) {
    // Subscribed first: on a new connection, the question for the owner precedes the probe.
    serviceWatch_ = watchName(bus_, service_->busName(), [this](const std::string& owner, NameNews news) {
        serviceChanged(owner, news);
    });
    stateSubscription_ = bus_.onStateChange([this] { busChanged(); });
}

void DesktopNotificationCenter::post(const std::string& title, const std::string& body) {
    if (waiting_.size() == mostWaiting) {
        waiting_.pop_front();
    }
    waiting_.push_back({.title = title, .body = body, .deadline = loop_.now() + patience_});
    if (ability_ == Ability::yes) {
        showWaiting();
        return;
    }
    findService();
    if (!staleTimer_) {
        staleTimer_ = loop_.after(patience_, [this] { dropStale(); });
    }
}

void DesktopNotificationCenter::setSubject(const std::string& subject) {
    if (std::exchange(subject_, subject) == subject) {
        return;
    }
    claim_.reset();
    if (!subject.empty()) {
        claim_.emplace(bus_, nameOf(subject), rank_);
        bus_.need();
    }
}

void DesktopNotificationCenter::requestAuthorization() {
    if (ability_ != Ability::yes) {
        findService();
    }
}

void DesktopNotificationCenter::findService() {
    isWanted_ = true;
    bus_.need();
    if (bus_.state() == BusConnection::State::unavailable) {
        setAbility(Ability::no);
    } else if (bus_.state() == BusConnection::State::connected) {
        if (isProbing_) {
            isAskedAgain_ = true;
        } else {
            probe();
        }
    }
}

void DesktopNotificationCenter::busChanged() {
    isProbing_ = false;
    ++probe_;
    if (isWanted_) {
        findService();
    }
}

void DesktopNotificationCenter::serviceChanged(const std::string& owner, NameNews news) {
    // A new connection probes anyway.
    const bool isNews = news == NameNews::changed && bus_.state() == BusConnection::State::connected;
    if (!isWanted_ || !isNews) {
        return;
    }
    if (!owner.empty()) {
        probe();
    } else if (!isProbing_) {
        // Many end when they have nothing to show, and are started again by the next notification.
        setAbility(Ability::unknown);
    }
}

void DesktopNotificationCenter::probe() {
    isProbing_ = true;
    isAskedAgain_ = false;
    service_->probe(patience_, lifeline_.guarded([this, probe = ++probe_](bool isThere) {
        if (probe == probe_) {
            isProbing_ = false;
            probed(isThere);
        }
    }));
}

void DesktopNotificationCenter::probed(bool isThere) {
    if (isThere) {
        showWaiting();
    } else if (isAskedAgain_) {
        // A notification or request came during the probe: it gets another one.
        probe();
    }
    setAbility(isThere ? Ability::yes : Ability::no);
}

void DesktopNotificationCenter::setAbility(Ability ability) {
    if (std::exchange(ability_, ability) != ability && onAbilityChange) {
        onAbilityChange();
    }
}

void DesktopNotificationCenter::showWaiting() {
    staleTimer_.reset();
    const bool isAnothers = claim_ && claim_->isAnothers();
    for (const Waiting& notification : std::exchange(waiting_, {})) {
        // It may be too old although the timer that drops it has not run yet.
        if (loop_.now() < notification.deadline && !isAnothers) {
            service_->show(notification.title, notification.body);
        }
    }
}

void DesktopNotificationCenter::dropStale() {
    staleTimer_.reset();
    while (!waiting_.empty() && waiting_.front().deadline <= loop_.now()) {
        waiting_.pop_front();
    }
    if (!waiting_.empty()) {
        staleTimer_ = loop_.after(waiting_.front().deadline - loop_.now(), [this] { dropStale(); });
    }
}

} // namespace tarnwick
