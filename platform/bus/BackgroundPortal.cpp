#include "platform/bus/BackgroundPortal.h"

#include "platform/bus/BusCall.h"
#include "platform/bus/NameWatch.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <tuple>
#include <utility>
#include <variant>

namespace tarnwick {

namespace {

using Option = std::variant<bool, std::string, std::vector<std::string>>;
using Results = std::map<std::string, std::variant<std::monostate, bool>>;

/// A part of an object's path that other programs can't guess: they could answer in the portal's place.
std::string newToken() {
    std::random_device source;
    return "tarnwick" + std::to_string(source()) + "_" + std::to_string(source());
}

/// Where the portal answers, by its documentation.
std::string answerPath(std::string uniqueName, const std::string& token) {
    std::ranges::replace(uniqueName, '.', '_');
    return "/org/freedesktop/portal/desktop/request/" + uniqueName.substr(1) + "/" + token;
}

constexpr auto backgroundPortalName = "org.freedesktop.portal.Desktop";

BusConnection::Call backgroundCall() {
    return {
        .destination = backgroundPortalName,
        .path = "/org/freedesktop/portal/desktop",
        .interface = "org.freedesktop.portal.Background",
        .method = "RequestBackground",
    };
}

/// Whether the portal has done what was asked.
bool hasAgreed(BusMessage& answer, bool toStart) {
    const auto values = answer.read<std::uint32_t, Results>();
    if (!values || std::get<0>(*values) != 0) {
        return false;
    }
    const Results& results = std::get<1>(*values);
    const auto found = results.find("autostart");
    const auto* const starts = found == results.end() ? nullptr : std::get_if<bool>(&found->second);
    return (starts != nullptr && *starts) == toStart;
}

} // namespace

BackgroundPortal::BackgroundPortal(Needs needs) : needs_(std::move(needs)) {
}

LoginItem::Status BackgroundPortal::status() const {
    const bool isOn = request_ ? request_->toStart : needs_.isGranted();
    return isOn ? Status::enabled : Status::notRegistered;
}

std::optional<std::string> BackgroundPortal::enroll() {
    return ask(true);
}

std::optional<std::string> BackgroundPortal::withdraw() {
    return status() == Status::notRegistered ? std::nullopt : ask(false);
}

std::optional<std::string> BackgroundPortal::ask(bool toStart) {
    if (needs_.bus.state() != BusConnection::State::connected) {
        return noPortal;
    }
    const std::string token = newToken();
    request_ = Request{.toStart = toStart, .token = token};
    request_->answer = awaitAnswer(*request_);
    request_->portal = awaitEndOfPortal();
    const std::map<std::string, Option> options{
        {"handle_token", token},
        {"reason", std::string("Tarnwick keeps an eye on your internet connection.")},
        {"autostart", toStart},
        {"commandline", needs_.command},
    };
    askBus<BusPath>(
        needs_.bus, backgroundCall(), std::tuple(std::string(), options),
        lifeline_.guarded([this, token](const BusReply<BusPath>& reply) {
            // An error may come so late that another request stands.
            if (!reply.result && request_ && request_->token == token) {
                answered(noPortal);
            }
        }));
    return std::nullopt;
}

Subscription BackgroundPortal::awaitAnswer(const Request& request) {
    const std::string path = answerPath(needs_.bus.uniqueName(), request.token);
    return needs_.bus.addMatch(
        "type='signal',interface='org.freedesktop.portal.Request',member='Response',path='" + path + "'",
        [this, toStart = request.toStart](BusMessage& answer) {
            const bool isAgreed = hasAgreed(answer, toStart);
            if (isAgreed) {
                needs_.remember(toStart);
            }
            answered(isAgreed ? "" : refused);
        });
}

/// A portal that ends or is no longer reached has forgotten the request.
Subscription BackgroundPortal::awaitEndOfPortal() {
    return watchName(needs_.bus, backgroundPortalName, [this](const std::string& owner, NameNews news) {
        if (news == NameNews::changed && owner.empty()) {
            answered(noPortal);
        }
    });
}

void BackgroundPortal::answered(const std::string& failure) {
    const std::optional<Request> done = std::exchange(request_, std::nullopt);
    if (onAnswer) {
        onAnswer(failure);
    }
}

} // namespace tarnwick
