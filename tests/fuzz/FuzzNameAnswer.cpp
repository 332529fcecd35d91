// Any message through `NameMessage::answer`: an accepted one has to repeat the id and the question.
#include "platform/dns/NameMessage.h"
#include "tests/fuzz/Fuzzing.h"

#include <algorithm>
#include <cctype>
#include <sys/socket.h>

namespace tarnwick {
namespace {

constexpr std::size_t idSize = 2;
constexpr std::size_t headerSize = 12;

bool isSameLetter(std::uint8_t one, std::uint8_t other) {
    return std::tolower(one) == std::tolower(other);
}

void judgeNameAnswer(std::span<const std::uint8_t> message, const std::vector<std::uint8_t>& query) {
    if (!NameMessage::answer(message, query)) {
        return;
    }
    const auto question = std::span(query).subspan(headerSize);
    fuzz::require(message.size() >= query.size());
    fuzz::require(std::ranges::equal(message.first(idSize), std::span(query).first(idSize)));
    fuzz::require(std::ranges::equal(message.subspan(headerSize, question.size()), question, isSameLetter));
}

} // namespace
} // namespace tarnwick

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto query = tarnwick::NameMessage::query(0x4242, "one.example", AF_INET);
    tarnwick::fuzz::require(query.has_value());
    tarnwick::judgeNameAnswer({data, size}, *query);
    return 0;
}
