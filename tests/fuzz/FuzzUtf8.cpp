// Any bytes through the UTF-8 decoder: a character keeps its bytes, and any other byte is replaced alone.
#include "core/Utf8.h"
#include "tests/fuzz/Fuzzing.h"

#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarnwick;
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    while (!rest.empty()) {
        const std::string_view before = rest;
        const char32_t character = Utf8::takeCharacter(rest);
        const std::size_t taken = before.size() - rest.size();
        std::string written;
        Utf8::append(written, character);
        fuzz::require(before.substr(0, taken) == written || (character == Utf8::replacement && taken == 1));
    }
    return 0;
}
