// Notification centers and the services behind them, for the contracts that all of them keep.
#pragma once

#include "platform/bus/BusCall.h"
#include "platform/bus/DesktopNotificationCenter.h"

#include "tests/platform/bus/BusTest.h"
#include "tests/platform/bus/FakeNotificationServices.h"
#include "tests/simulation/RecordingNotificationCenter.h"
#include "tests/support/ClockAhead.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace tarnwick {

using ShownNotifications = std::vector<simulation::RecordingNotificationCenter::Notification>;

/// The recorder that the model's tests use.
class RecordingDriver : public testing::Test {
protected:
    NotificationCenter& center() { return center_; }

    ShownNotifications shown() { return center_.shown(); }

    void removeService() { center_.answer = NotificationCenter::Ability::no; }

    void addService() { center_.answer = NotificationCenter::Ability::yes; }

    [[nodiscard]] static bool runUntil(const std::function<bool()>& condition) { return condition(); }

private:
    simulation::RecordingNotificationCenter center_;
};

/// The desktop's center with a service on a private bus.
template<typename Service, DesktopNotificationCenter::Surroundings inSurroundings>
class ServiceDriver : public BusTest {
protected:
    static constexpr auto surroundings = inSurroundings;

    /// Outlasts any test.
    static constexpr double longPatience = 60;

    void addService() { service_.emplace(addPeer()); }

    /// It ends.
    void removeService() {
        service_.reset();
        hanging_.reset();
        peers_.clear();
    }

    /// It has its name, but reads nothing from now on.
    void hangService() {
        hanging_ = std::move(peers_.back());
        peers_.pop_back();
    }

    void wakeUpService() { peers_.push_back(std::move(hanging_)); }

    void addHangingService() {
        addService();
        hangService();
    }

    /// A center that gives up after these seconds, instead of one that waits longer than any test.
    void becomeImpatient(double patience) {
        center_.emplace(clock_, bus_, surroundings, std::filesystem::path(), patience);
    }

    /// Another program on the bus, with a center of its own.
    struct OtherProgram {
        OtherProgram(RunLoop& loop, const std::string& address, NameClaim::Rank rank)
            : bus(loop, address),
              center(loop, bus, surroundings, std::filesystem::path(), longPatience, rank) {}

        BusConnection bus;
        DesktopNotificationCenter center;
    };

    /// A center of a program of this rank.
    void becomeOf(NameClaim::Rank rank) {
        center_.emplace(clock_, bus_, surroundings, std::filesystem::path(), longPatience, rank);
    }

    /// Gives the center a subject, and waits until the bus has told it whose it is.
    [[nodiscard]] bool runUntilItHasSubject(
        NotificationCenter& center, BusConnection& bus, const std::string& subject) {
        if (!runUntil([&bus] { return bus.state() == BusConnection::State::connected; })) {
            return false;
        }
        center.setSubject(subject);
        return runUntilAnsweredOn(bus);
    }

    /// Until the bus has answered all that was asked on this connection.
    [[nodiscard]] bool runUntilAnsweredOn(BusConnection& bus) {
        bool isAnswered = false;
        callBus<std::string>(
            bus, daemonCall("GetId"), std::tuple(),
            [&isAnswered](const std::optional<std::string>&) { isAnswered = true; });
        return runUntil([&isAnswered] { return isAnswered; });
    }

    [[nodiscard]] std::unique_ptr<OtherProgram> otherProgram(NameClaim::Rank rank) {
        return std::make_unique<OtherProgram>(clock_, this->daemon_.address(), rank);
    }

    /// Makes what is posted too old, before a timer has noticed.
    void outlastPatience() { clock_.putForward(longPatience); }

    NotificationCenter& center() { return *center_; }

    Service& service() { return *service_; }

    ShownNotifications shown() {
        ShownNotifications result;
        for (const auto& notification : service_->shown()) {
            result.push_back({notification.title, notification.body});
        }
        return result;
    }

    [[nodiscard]] std::vector<std::string> titles() {
        std::vector<std::string> result;
        for (const auto& notification : service_->shown()) {
            result.push_back(notification.title);
        }
        return result;
    }

    [[nodiscard]] bool runUntilShown(std::size_t count) {
        return runUntil([this, count] { return service_->shown().size() == count; });
    }

    [[nodiscard]] bool runUntilAbilityIs(NotificationCenter::Ability ability) {
        return runUntil([this, ability] { return center_->canNotify() == ability; });
    }

    [[nodiscard]] bool runUntilUnavailable() {
        return runUntil([this] { return bus_.state() == BusConnection::State::unavailable; });
    }

    /// Until everything that was sent to the service has arrived there.
    [[nodiscard]] bool runUntilServiceHasHeard() { return runUntilHeardBy(service_->peer()); }

    std::unique_ptr<BusPeer> hanging_;

private:
    std::optional<Service> service_;
    test::ClockAhead clock_{loop_};
    std::optional<DesktopNotificationCenter> center_{std::in_place,           clock_,      bus_, surroundings,
                                                     std::filesystem::path(), longPatience};
};

using DaemonDriver = ServiceDriver<FakeNotificationDaemon, DesktopNotificationCenter::Surroundings::desktop>;
using PortalDriver = ServiceDriver<FakeNotificationPortal, DesktopNotificationCenter::Surroundings::sandbox>;

} // namespace tarnwick
