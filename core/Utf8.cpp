#include "core/Utf8.h"

#include <array>

namespace tarnwick::Utf8 {

namespace {

constexpr unsigned continuationBits = 6;
constexpr unsigned continuationMask = 0x3F;

/// How characters of each length in bytes begin, and the smallest one that needs this length.
struct Form {
    unsigned lead; ///< of the first byte: its upper bits
    unsigned mask; ///< and the bits that belong to the character
    char32_t smallest;
};

constexpr std::array forms{
    Form{0x00, 0x7F, 0},
    Form{0xC0, 0x1F, 0x80},
    Form{0xE0, 0x0F, 0x800},
    Form{0xF0, 0x07, 0x10000},
};

bool isCharacter(char32_t number) {
    const bool isSurrogate = number >= 0xD800 && number <= 0xDFFF;
    return !isSurrogate && number <= 0x10FFFF;
}

/// The index of the form that a character with this first byte has; `forms.size()` for none.
std::size_t formOf(unsigned first) {
    std::size_t index = 0;
    while (index < forms.size() && (first & ~forms[index].mask) != forms[index].lead) {
        ++index;
    }
    return index;
}

} // namespace

char32_t takeCharacter(std::string_view& text) {
    const std::string_view whole = text;
    const auto byteAt = [whole](std::size_t index) -> unsigned {
        return static_cast<unsigned char>(whole[index]);
    };
    text.remove_prefix(1);
    const std::size_t following = formOf(byteAt(0));
    if (following >= forms.size() || following >= whole.size()) {
        return replacement;
    }
    char32_t character = byteAt(0) & forms[following].mask;
    for (std::size_t index = 1; index <= following; ++index) {
        if ((byteAt(index) & ~continuationMask) != 0x80) {
            return replacement;
        }
        character = character << continuationBits | (byteAt(index) & continuationMask);
    }
    if (character < forms[following].smallest || !isCharacter(character)) {
        return replacement;
    }
    text.remove_prefix(following);
    return character;
}

void append(std::string& text, char32_t character) {
    std::size_t following = forms.size() - 1;
    while (character < forms[following].smallest) {
        --following;
    }
    auto shift = static_cast<unsigned>(following) * continuationBits;
    text += static_cast<char>(forms[following].lead | character >> shift);
    while (shift > 0) {
        shift -= continuationBits;
        text += static_cast<char>(0x80 | (character >> shift & continuationMask));
    }
}

std::size_t length(std::string_view text) {
    std::size_t count = 0;
    for (; !text.empty(); ++count) {
        static_cast<void>(takeCharacter(text));
    }
    return count;
}

} // namespace tarnwick::Utf8
