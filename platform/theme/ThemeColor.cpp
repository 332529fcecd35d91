#include "platform/theme/ThemeColor.h"

#include "core/Text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <vector>

namespace tarnwick {

namespace {

// More of the ground shows through a color that is fainter.
constexpr double leastOpacity = 0.4;
constexpr double most = 255; ///< of a channel

std::optional<double> brightness(double red, double green, double blue, double opacity) {
    if (opacity < leastOpacity) {
        return std::nullopt;
    }
    return (0.299 * red + 0.587 * green + 0.114 * blue) / most;
}

std::optional<double> ofHexadecimal(std::string_view digits) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        return std::nullopt;
    }
    const auto channel = [value](unsigned shift, unsigned mask) {
        return static_cast<double>((value >> shift) & mask);
    };
    if (digits.size() == 3) {
        constexpr double wider = 17; // 0xF to 0xFF
        return brightness(wider * channel(8, 15), wider * channel(4, 15), wider * channel(0, 15), 1);
    }
    if (digits.size() != 6 && digits.size() != 8) {
        return std::nullopt;
    }
    const double opacity = digits.size() == 8 ? channel(24, 255) / most : 1;
    return brightness(channel(16, 255), channel(8, 255), channel(0, 255), opacity);
}

/// "40" is 40, "60%" is that part of `whole`.
std::optional<double> number(std::string_view text, double whole) {
    text = Text::trimmed(text);
    const bool isPart = text.ends_with('%');
    if (isPart) {
        text.remove_suffix(1);
    }
    const std::optional<double> value = Text::parseNumber(text);
    return value && isPart ? *value / 100 * whole : value;
}

/// Three channels, and the opacity as a part of 255 or in percent.
std::optional<double> ofNumbers(std::string_view list) {
    std::vector<double> channels;
    while (!list.empty()) {
        const std::size_t comma = std::min(list.find(','), list.size());
        const std::optional<double> channel = number(list.substr(0, comma), most);
        if (!channel) {
            return std::nullopt;
        }
        channels.push_back(*channel);
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
    if (channels.size() != 3 && channels.size() != 4) {
        return std::nullopt;
    }
    return brightness(channels[0], channels[1], channels[2], channels.size() == 4 ? channels[3] / most : 1);
}

/// Up to the comma or parenthesis that ends this argument.
std::string_view argument(std::string_view text) {
    int depth = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '(') {
            ++depth;
        } else if (depth == 0 && (text[at] == ',' || text[at] == ')')) {
            return text.substr(0, at);
        } else if (text[at] == ')') {
            --depth;
        }
    }
    return text;
}

std::optional<double> ofOneColor(std::string_view color) {
    color = Text::trimmed(color);
    if (color == "white" || color == "black") {
        return color == "white" ? 1 : 0;
    }
    if (color.starts_with('#')) {
        return ofHexadecimal(color.substr(1));
    }
    for (const std::string_view function : {"rgb(", "rgba("}) {
        if (color.starts_with(function) && color.ends_with(')')) {
            return ofNumbers(color.substr(function.size(), color.size() - function.size() - 1));
        }
    }
    return ofNumbers(color);
}

std::optional<double> ofGradient(std::string_view text) {
    constexpr std::string_view mark = "stop:";
    double sum = 0;
    int stops = 0;
    for (std::size_t at = text.find(mark); at != std::string_view::npos; at = text.find(mark)) {
        const std::string_view stop = Text::trimmed(argument(text.substr(at + mark.size())));
        // The place on the gradient, and the color there.
        const std::size_t blank = stop.find(' ');
        const auto bright = blank == std::string_view::npos ? std::nullopt : ofOneColor(stop.substr(blank));
        if (!bright) {
            return std::nullopt;
        }
        sum += *bright;
        ++stops;
        text.remove_prefix(at + mark.size());
    }
    return stops > 0 ? std::optional(sum / stops) : std::nullopt;
}

} // namespace

std::optional<double> brightnessOf(std::string_view color) {
    color = Text::trimmed(color);
    return color.starts_with("qlineargradient(") ? ofGradient(color) : ofOneColor(color);
}

} // namespace tarnwick
