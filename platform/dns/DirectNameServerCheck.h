// Asks the name servers of this machine themselves, past the system's resolver.
#pragma once

#include "core/FileDescriptor.h"
#include "core/RunLoop.h"
#include "platform/ports/NameServerCheck.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// One query over UDP to each, from a port of its own; none is repeated. Main thread.
class DirectNameServerCheck final : public NameServerCheck {
public:
    /// Seconds for an answer: more than a late one that the resolver would still wait for.
    static constexpr double usualPatience = 3;
    static constexpr std::uint16_t usualPort = 53;

    /// Numeric addresses, as `NameServers::asked` gives them.
    using Servers = std::function<std::vector<std::string>()>;

    DirectNameServerCheck(
        RunLoop& loop, Servers servers, double patience = usualPatience, std::uint16_t port = usualPort);

    void ask(const std::string& host, std::int32_t family, Answer answer) override;

private:
    struct Asked {
        NameServerEvidence evidence;
        std::vector<std::uint8_t> query{};
        double sentAt = 0;
        FileDescriptor socket{};
        RunLoop::Handle watch{}; ///< null: it has answered, or can't
    };

    void send(Asked& asked);
    void receive(Asked& asked);
    void settle(Asked& asked, NameServerEvidence::Answer answer);
    void finishWhenAllAreSettled();
    void finish();

    RunLoop& loop_;
    Servers servers_;
    double patience_;
    std::uint16_t port_;
    Answer answer_;
    std::vector<Asked> asked_; ///< stays as it is from question to answer: the watches refer to its elements
    RunLoop::Handle end_;
};

} // namespace tarnwick
