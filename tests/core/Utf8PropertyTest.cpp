// Every character, and any bytes.
#include "core/Utf8.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <string>

namespace tarnwick {

TEST(Utf8Property, EveryCharacterReadsBackAsItself) {
    for (char32_t character = 0; character <= 0x10FFFF; ++character) {
        if (character == 0xD800) {
            character = 0xE000; // the surrogates are no characters
        }
        std::string text;
        Utf8::append(text, character);
        std::string_view rest = text;
        ASSERT_EQ(Utf8::takeCharacter(rest), character);
        ASSERT_TRUE(rest.empty());
    }
}

TEST(Utf8Property, AnyBytesAreWellFormedOnceTheyAreRewritten) {
    EXPECT_TRUE(
        rc::check("a character keeps its bytes, any other byte becomes U+FFFD", [](const std::string& bytes) {
            std::string_view rest = bytes;
            while (!rest.empty()) {
                const std::string_view before = rest;
                const char32_t character = Utf8::takeCharacter(rest);
                const std::size_t taken = before.size() - rest.size();
                std::string written;
                Utf8::append(written, character);
                RC_ASSERT(
                    before.substr(0, taken) == written || (character == Utf8::replacement && taken == 1));
            }
        }));
}

} // namespace tarnwick
