#include "app/Watch/PlainLine.h"

#include "core/Text.h"
#include "core/Utf8.h"

#include <array>
#include <ctime>

namespace tarnwick {

namespace {

constexpr std::size_t qualityWidth = 18; // "Paused until 15:30"
constexpr std::size_t latencyColumn = 9;
constexpr std::size_t lossColumn = 10;

std::string localTime(RunLoop::WallTime time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts{};
    localtime_r(&seconds, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
    return text.data();
}

std::string padded(std::string text, std::size_t width, bool rightAligned) {
    const std::size_t length = Utf8::length(text);
    text.insert(rightAligned ? 0 : text.size(), width > length ? width - length : 0, ' ');
    return text;
}

} // namespace

std::string plainLine(const Reading& reading, RunLoop::WallTime time) {
    return localTime(time) + "  " + padded(reading.qualityTitle, qualityWidth, false)
           + padded(reading.latencyText, latencyColumn, true)
           + padded(reading.lossText.value_or(""), lossColumn, true) + "  "
           + Text::printable(reading.hostLine)
           + (reading.verdict ? "  " + Text::printable(reading.verdict->evidence) : "") + "\n";
}

} // namespace tarnwick
