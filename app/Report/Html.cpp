#include "app/Report/Html.h"

#include "app/Report/LocalText.h"
#include "core/Text.h"

namespace tarnwick::Html {

std::string escaped(std::string_view text) {
    std::string safe;
    for (const char letter : Text::printable(text)) {
        switch (letter) {
        case '&':
            safe += "&amp;";
            break;
        case '<':
            safe += "&lt;";
            break;
        case '>':
            safe += "&gt;";
            break;
        case '"':
            safe += "&quot;";
            break;
        default:
            safe += letter;
        }
    }
    return safe;
}

std::string shortened(const std::string& text, std::size_t most) {
    if (text.size() <= most) {
        return text;
    }
    const auto isInside = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; };
    std::size_t end = most;
    while (end > 0 && isInside(text[end])) {
        --end;
    }
    return text.substr(0, end) + "…";
}

std::string element(std::string_view name, std::string_view attributes, std::string_view content) {
    std::string text = "<";
    text.append(name).append(attributes).append(">").append(content);
    return text.append("</").append(name).append(">");
}

std::string element(std::string_view name, std::string_view content) {
    return element(name, "", content);
}

std::string emptyElement(std::string_view name, std::string_view attributes) {
    return std::string("<").append(name).append(attributes).append("/>");
}

std::string attribute(std::string_view name, std::string_view value) {
    return std::string(" ").append(name).append("=\"").append(escaped(value)).append("\"");
}

std::string attribute(std::string_view name, double value) {
    return attribute(name, LocalText::number(value, 1));
}

} // namespace tarnwick::Html
