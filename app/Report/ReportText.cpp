#include "app/Report/ReportText.h"

#include "app/Report/LocalText.h"

namespace tarnwick {

namespace {

std::string row(const std::string& name, const std::string& value) {
    constexpr std::size_t width = 18;
    return "  " + name + std::string(name.size() < width ? width - name.size() : 1, ' ') + value + "\n";
}

std::string availabilityPart(const Availability& availability) {
    std::string text = "Availability\n";
    text += row("up", LocalText::availability(availability.percent()) + " of the time watched");
    text += row("down", LocalText::length(availability.down));
    text += row("watched", LocalText::length(availability.watched));
    text += row("asleep", LocalText::length(availability.asleep));
    text += row("paused", LocalText::length(availability.paused));
    text += row("not watched", LocalText::length(availability.notWatched));
    return text;
}

std::string figuresPart(const PeriodFigures& figures) {
    std::string text = "Latency and loss\n";
    const bool isAnswered = figures.replied > 0;
    text += row("pings", std::to_string(figures.sent) + ", " + std::to_string(figures.lost) + " lost");
    const auto loss = figures.lossPercent();
    text += row("loss", loss ? LocalText::number(*loss, 2) + "%" : "unknown");
    text +=
        row("fastest", LocalText::milliseconds(isAnswered ? std::optional(figures.fastestMs) : std::nullopt));
    text += row("median", LocalText::milliseconds(figures.medianMs()));
    text += row("95th percentile", LocalText::milliseconds(figures.percentile95Ms()));
    text += row("99th percentile", LocalText::milliseconds(figures.percentile99Ms()));
    text +=
        row("slowest", LocalText::milliseconds(isAnswered ? std::optional(figures.slowestMs) : std::nullopt));
    text += row("jitter", LocalText::milliseconds(figures.jitterMs()));
    return text;
}

std::string outagesPart(const std::vector<OutageEntry>& outages, const UtcOffset& offset) {
    std::string text = "Outages: " + std::to_string(outages.size()) + "\n";
    for (const OutageEntry& outage : outages) {
        text += "  " + LocalText::time(outage.episode.start, offset) + "  " + LocalText::length(outage.length)
                + (outage.lasts ? ", and it lasts" : "") + "\n";
        if (const auto& verdict = outage.episode.verdict) {
            text += "    " + verdict->evidence + " (" + std::string(nameOf(verdict->likelihood)) + ")\n";
        }
    }
    return text;
}

std::string worstPart(const std::vector<HourSummary>& hours, const UtcOffset& offset) {
    std::string text = "Worst hours\n";
    for (const HourSummary& hour : hours) {
        text += "  " + LocalText::minute(hour.span.from, offset) + "  down "
                + LocalText::length(hour.availability.down) + ", loss "
                + LocalText::number(hour.figures.lossPercent().value_or(0), 1) + "%, 95th percentile "
                + LocalText::milliseconds(hour.figures.percentile95Ms()) + "\n";
    }
    return hours.empty() ? "" : text + "\n";
}

constexpr const char* method =
    "How it was measured\n"
    "  One ICMP echo request at a time went to the host at a steady interval. When several in a row stay\n"
    "  unanswered the connection counts as down, from the first of them until the next answer; a shorter\n"
    "  silence is loss. Availability is the share of the time watched in which it was not down; time "
    "asleep,\n"
    "  paused or not watched counts neither way. Pings sent while it was down are not counted.\n"
    "  Percentiles are within 2.2%.\n";

} // namespace

std::string reportText(const Report& report, const UtcOffset& offset) {
    if (report.span.isEmpty()) {
        return "Nothing is known of " + report.host + " in this time.\n";
    }
    return "Connection to " + report.host + "\n" + LocalText::time(report.span.from, offset) + " to "
           + LocalText::time(report.span.to, offset) + "\nTimes are in "
           + LocalText::zones(report.span, offset) + ".\n\n" + availabilityPart(report.availability) + "\n"
           + figuresPart(report.figures) + "\n" + outagesPart(report.outages, offset) + "\n"
           + worstPart(report.worstHours, offset) + method;
}

} // namespace tarnwick
