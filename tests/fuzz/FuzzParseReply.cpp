// Any datagram through `parseReply`: an accepted one has to hold the request that its id belongs to.
#include "core/Pinger/EchoMessage.h"
#include "tests/fuzz/Fuzzing.h"

#include <algorithm>
#include <sys/socket.h>

namespace tarnwick {
namespace {

constexpr std::uint16_t identifier = 0x4242;

/// The accepted message is the request with another type, whatever its checksum.
bool holdsRequestOf(std::uint64_t id, std::span<const std::uint8_t> datagram, std::int32_t family) {
    const EchoMessage request = echoRequest(id, identifier, family);
    const auto afterChecksum = std::span(request).subspan(4);
    return std::search(datagram.begin(), datagram.end(), afterChecksum.begin(), afterChecksum.end())
           != datagram.end();
}

void judge(std::span<const std::uint8_t> datagram, std::int32_t family) {
    if (const std::optional<std::uint64_t> id = parseReply(datagram, family, identifier)) {
        fuzz::require(holdsRequestOf(*id, datagram, family));
    }
}

} // namespace
} // namespace tarnwick

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span datagram(data, size);
    tarnwick::judge(datagram, AF_INET);
    tarnwick::judge(datagram, AF_INET6);
    static_cast<void>(tarnwick::checksum(datagram));
    return 0;
}
