#include "core/Pinger/Pinger.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

namespace tarnwick {

namespace {

/// Ids rise, so the smallest ones are the oldest.
constexpr std::size_t mostRememberedPings = 64;
constexpr std::size_t receiveBufferSize = 2048;
/// A flood must not starve the rest of the program: the datagrams left make the socket readable again.
constexpr int mostDatagramsAtOnce = 256;

} // namespace

Pinger::Pinger(
    RunLoop& loop, PingNetwork& network, std::string hostName, std::uint16_t identifier,
    double responseDeadline, std::optional<Place> goOnFrom)
    : loop_(loop),
      network_(network),
      hostName_(std::move(hostName)),
      identifier_(identifier),
      responseDeadline_(responseDeadline),
      placeBefore_(std::move(goOnFrom)) {
}

void Pinger::start() {
    stop();
    const int run = ++generation_;
    network_.resolve(hostName_, lifeline_.guarded([this, run](const Resolution& resolution) {
        if (generation_ != run) {
            return;
        }
        if (const auto* error = std::get_if<PingError>(&resolution)) {
            emit(Failed{*error});
        } else {
            open(std::get<std::vector<ResolvedAddress>>(resolution));
        }
    }));
}

void Pinger::stop() {
    ++generation_;
    placeBefore_ = place();
    sockets_.clear();
    addresses_.clear();
    sentTo_.clear();
    selector_ = {};
}

const ResolvedAddress* Pinger::address() const {
    const auto index = static_cast<std::size_t>(selector_.index);
    return index < addresses_.size() ? &addresses_[index] : nullptr;
}

std::optional<Pinger::Place> Pinger::place() const {
    const ResolvedAddress* const current = address();
    return current != nullptr ? std::optional(Place{*current, selector_.isInVain()}) : placeBefore_;
}

int Pinger::firstIndex() const {
    if (!placeBefore_) {
        return 0;
    }
    const auto before = std::ranges::find(addresses_, placeBefore_->address);
    if (before == addresses_.end()) {
        return 0;
    }
    const auto index = static_cast<std::size_t>(before - addresses_.begin());
    return static_cast<int>((index + (placeBefore_->isInVain ? 1 : 0)) % addresses_.size());
}

void Pinger::open(const std::vector<ResolvedAddress>& resolved) {
    std::optional<std::string> failure; // the first: where pinging is forbidden, IPv6 may only be absent
    std::set<std::int32_t> families;
    for (const ResolvedAddress& candidate : resolved) {
        families.insert(candidate.family);
    }
    for (const std::int32_t family : families) {
        auto opened = network_.open(family, identifier_, [this, family] { readAvailable(family); });
        if (auto* error = std::get_if<SocketError>(&opened)) {
            failure = failure.value_or(error->text);
        } else {
            sockets_.emplace(family, std::move(std::get<std::unique_ptr<EchoSocket>>(opened)));
        }
    }
    std::ranges::copy_if(resolved, std::back_inserter(addresses_), [this](const ResolvedAddress& candidate) {
        return sockets_.contains(candidate.family);
    });
    selector_ = {
        .count = static_cast<int>(addresses_.size()), .deadline = responseDeadline_, .index = firstIndex()};
    if (addresses_.empty()) {
        emit(Failed{PingError::socket(failure.value_or("no usable address"))});
    } else {
        emit(Started{*address()});
    }
}

SendOutcome Pinger::send(std::uint64_t id) {
    const ResolvedAddress* to = address();
    if (to == nullptr) {
        return {.isSent = false, .at = loop_.now()};
    }
    EchoSocket& socket = *sockets_.at(to->family);
    const SendOutcome outcome = socket.send(echoRequest(id, socket.identifier(), to->family), *to);
    rememberAddressOf(id);
    if (outcome.isSent ? selector_.sent(outcome.at) : selector_.sendFailed()) {
        reportSwitch();
    }
    return outcome;
}

void Pinger::rememberAddressOf(std::uint64_t id) {
    sentTo_[id] = selector_.index;
    if (sentTo_.size() > mostRememberedPings) {
        sentTo_.erase(sentTo_.begin());
    }
}

void Pinger::readAvailable(std::int32_t family) {
    std::array<std::uint8_t, receiveBufferSize> buffer{};
    const Lifeline::Watch watch = lifeline_.watch();
    const int run = generation_;
    for (int count = 0; count < mostDatagramsAtOnce; ++count) {
        EchoSocket& socket = *sockets_.at(family);
        const std::optional<ReceivedDatagram> received = socket.receive(buffer);
        if (!received) {
            return;
        }
        const auto datagram = std::span<const std::uint8_t>(buffer).first(received->size);
        if (const auto id = parseReply(datagram, family, socket.identifier())) {
            receivedReply(*id, received->at);
        }
        // The owner may have ended this run, or the pinger itself.
        if (watch.hasEnded() || generation_ != run) {
            return;
        }
    }
}

void Pinger::receivedReply(std::uint64_t id, double at) {
    const Lifeline::Watch watch = lifeline_.watch();
    const int run = generation_;
    if (const auto sent = sentTo_.find(id); sent != sentTo_.end()) {
        const int from = sent->second;
        sentTo_.erase(sent);
        if (selector_.replied(from)) {
            reportSwitch();
        }
    }
    if (!watch.hasEnded() && generation_ == run) {
        emit(Reply{id, at});
    }
}

void Pinger::reportSwitch() {
    emit(Switched{addresses_[static_cast<std::size_t>(selector_.index)]});
}

void Pinger::emit(const Event& event) const {
    // A copy: the owner may destroy this object during the call.
    if (const auto callback = onEvent) {
        callback(event);
    }
}

} // namespace tarnwick
