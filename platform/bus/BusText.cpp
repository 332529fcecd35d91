#include "platform/bus/BusText.h"

#include <cstddef>

namespace tarnwick {

namespace {

unsigned byteAt(std::string_view text, std::size_t position) {
    return position < text.size() ? static_cast<unsigned char>(text[position]) : 0U;
}

bool isContinuation(unsigned byte) {
    return (byte & 0xC0U) == 0x80U;
}

/// How many bytes the character at `position` has; 0 when there is none.
std::size_t characterLength(std::string_view text, std::size_t position) {
    const unsigned first = byteAt(text, position);
    const unsigned second = byteAt(text, position + 1);
    if (first < 0x80U) {
        return first == 0 ? 0 : 1;
    }
    std::size_t length = 0;
    if (first >= 0xC2U && first <= 0xDFU) {
        length = 2;
    } else if (first >= 0xE0U && first <= 0xEFU) {
        length = 3;
    } else if (first >= 0xF0U && first <= 0xF4U) {
        length = 4;
    }
    // Longer forms than needed, surrogates, and what lies beyond the last character.
    if ((first == 0xE0U && second < 0xA0U) || (first == 0xEDU && second > 0x9FU)
        || (first == 0xF0U && second < 0x90U) || (first == 0xF4U && second > 0x8FU)) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (!isContinuation(byteAt(text, position + i))) {
            return 0;
        }
    }
    return length;
}

} // namespace

std::string validUtf8(std::string_view text) {
    std::string valid;
    valid.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        if (const std::size_t length = characterLength(text, position); length > 0) {
            valid += text.substr(position, length);
            position += length;
        } else {
            valid += byteAt(text, position) == 0 ? "" : "\uFFFD";
            ++position;
        }
    }
    return valid;
}

std::string asMarkup(std::string_view text, std::string_view lineBreak) {
    std::string result;
    for (const char character : text) {
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '\n':
            result += lineBreak;
            break;
        default:
            result += character;
        }
    }
    return result;
}

} // namespace tarnwick
