#include "platform/bus/BusText.h"

#include "core/Utf8.h"

namespace tarnwick {

std::string validUtf8(std::string_view text) {
    std::string valid;
    valid.reserve(text.size());
    while (!text.empty()) {
        // A null byte would end the text on the bus: it is left out.
        if (const char32_t character = Utf8::takeCharacter(text); character != 0) {
            Utf8::append(valid, character);
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
