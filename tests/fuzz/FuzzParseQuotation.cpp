// Any quotation through `parseQuotation`: an accepted one has to be the beginning of a request of ours.
#include "core/Pinger/EchoMessage.h"
#include "tests/fuzz/Fuzzing.h"

#include <algorithm>
#include <sys/socket.h>

namespace tarnwick {
namespace {

constexpr std::uint16_t identifier = 0x4242;
constexpr std::size_t checksumEnd = 4;

void judgeQuotation(std::span<const std::uint8_t> quotation, std::int32_t family) {
    const std::optional<QuotedRequest> quoted = parseQuotation(quotation, family, identifier);
    if (!quoted) {
        return;
    }
    fuzz::require(quoted->id.has_value() == (quotation.size() >= echoMessageSize));
    // Where the id is not quoted, any with these low bits will do: what is quoted of it is not looked at.
    const EchoMessage request = echoRequest(quoted->id.value_or(quoted->sequence), identifier, family);
    const std::size_t known = quoted->id ? echoMessageSize : std::min<std::size_t>(quotation.size(), 16);
    fuzz::require(std::equal(
        request.begin() + checksumEnd, request.begin() + static_cast<std::ptrdiff_t>(known),
        quotation.begin() + checksumEnd));
}

} // namespace
} // namespace tarnwick

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span quotation(data, size);
    tarnwick::judgeQuotation(quotation, AF_INET);
    tarnwick::judgeQuotation(quotation, AF_INET6);
    return 0;
}
