// One echo request built, one datagram judged: the work of every ping on the wire.
#include "core/Pinger/EchoMessage.h"

#include <array>
#include <benchmark/benchmark.h>
#include <netinet/in.h>

namespace tarnwick {

namespace {

constexpr std::uint16_t identifier = 0x1234;

/// What a host answers: the request with the reply's type. No one looks at the checksum.
EchoMessage replyTo(EchoMessage request, std::int32_t family) {
    constexpr std::uint8_t reply4 = 0;
    constexpr std::uint8_t reply6 = 129;
    request[0] = family == AF_INET ? reply4 : reply6;
    return request;
}

/// Work per iteration: one request of 24 bytes; over IPv4 with its checksum.
void BuildEchoRequest(benchmark::State& state) {
    const auto family = static_cast<std::int32_t>(state.range(0));
    std::uint64_t id = 0;
    for ([[maybe_unused]] auto iteration : state) {
        benchmark::DoNotOptimize(echoRequest(id++, identifier, family));
    }
}

/// Work per iteration: one datagram of 24 bytes, accepted.
void ParseOwnReply(benchmark::State& state) {
    const auto family = static_cast<std::int32_t>(state.range(0));
    EchoMessage reply = replyTo(echoRequest(1, identifier, family), family);
    for ([[maybe_unused]] auto iteration : state) {
        benchmark::DoNotOptimize(reply);
        const auto id = parseReply(reply, family, identifier);
        if (id != 1U) {
            state.SkipWithError("the reply was not recognized");
        }
    }
}

/// Work per iteration: one datagram of 24 bytes, dropped for its foreign content.
void ParseForeignReply(benchmark::State& state) {
    const auto family = static_cast<std::int32_t>(state.range(0));
    EchoMessage reply = replyTo(echoRequest(1, identifier, family), family);
    reply[echoMessageSize - echoMagic.size() - 1] ^= 1;
    for ([[maybe_unused]] auto iteration : state) {
        benchmark::DoNotOptimize(reply);
        if (parseReply(reply, family, identifier)) {
            state.SkipWithError("a foreign reply was taken");
        }
    }
}

BENCHMARK(BuildEchoRequest)->ArgName("family")->Arg(AF_INET)->Arg(AF_INET6);
BENCHMARK(ParseOwnReply)->ArgName("family")->Arg(AF_INET)->Arg(AF_INET6);
BENCHMARK(ParseForeignReply)->ArgName("family")->Arg(AF_INET)->Arg(AF_INET6);

} // namespace

} // namespace tarnwick
