#include "app/Report/ReportCsv.h"

#include "app/Report/LocalText.h"

#include <array>

namespace tarnwick {

namespace {

std::string csvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char character : text) {
        quoted += character == '"' ? std::string("\"\"") : std::string(1, character);
    }
    return quoted + "\"";
}

template<std::size_t Count>
std::string csvLine(const std::array<std::string, Count>& fields) {
    std::string line;
    for (const std::string& field : fields) {
        line += csvField(field) + ",";
    }
    line.pop_back();
    return line + "\r\n";
}

std::string outageLine(const OutageEntry& outage, const UtcOffset& offset) {
    const Episode& episode = outage.episode;
    const Verdict verdict = episode.verdict.value_or(Verdict{});
    const auto ifReached = [&](std::string_view text) {
        return episode.verdict ? std::string(text) : std::string();
    };
    return csvLine(std::array{
        LocalText::isoTime(episode.start, offset),
        episode.end ? LocalText::isoTime(*episode.end, offset) : std::string(),
        std::to_string(outage.length.count()), ifReached(nameOf(verdict.blame)),
        ifReached(nameOf(verdict.likelihood)), ifReached(verdict.evidence), episode.address,
        episode.interface, std::to_string(episode.pingsLost)});
}

} // namespace

std::string reportCsv(const Report& report, const UtcOffset& offset) {
    std::string text = csvLine(std::array<std::string, 9>{
        "start", "end", "seconds", "verdict", "likelihood", "evidence", "address", "interface", "pingsLost"});
    for (const OutageEntry& outage : report.outages) {
        text += outageLine(outage, offset);
    }
    return text;
}

} // namespace tarnwick
