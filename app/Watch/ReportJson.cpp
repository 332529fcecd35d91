#include "app/Watch/ReportJson.h"

#include "app/Report/LocalText.h"
#include "app/Watch/JsonText.h"

namespace tarnwick {

namespace {

void addAvailability(JsonText& json, const Availability& availability) {
    json.add("percent", availability.percent());
    json.add("watchedSeconds", availability.watched);
    json.add("downSeconds", availability.down);
    json.add("asleepSeconds", availability.asleep);
    json.add("pausedSeconds", availability.paused);
    json.add("notWatchedSeconds", availability.notWatched);
}

void addFigures(JsonText& json, const PeriodFigures& figures) {
    const bool isAnswered = figures.replied > 0;
    json.add("sent", figures.sent);
    json.add("replied", figures.replied);
    json.add("lost", figures.lost);
    json.add("lossPercent", figures.lossPercent());
    json.add("fastestMs", isAnswered ? std::optional(figures.fastestMs) : std::nullopt);
    json.add("medianMs", figures.medianMs());
    json.add("percentile95Ms", figures.percentile95Ms());
    json.add("percentile99Ms", figures.percentile99Ms());
    json.add("slowestMs", isAnswered ? std::optional(figures.slowestMs) : std::nullopt);
    json.add("jitterMs", figures.jitterMs());
}

void addOutage(JsonText& json, const OutageEntry& outage, const UtcOffset& offset) {
    const Episode& episode = outage.episode;
    const auto& verdict = episode.verdict;
    json.add("start", LocalText::isoTime(episode.start, offset));
    json.add("end", episode.end ? std::optional(LocalText::isoTime(*episode.end, offset)) : std::nullopt);
    json.add("seconds", outage.length.count());
    json.add("verdict", verdict ? std::optional(nameOf(verdict->blame)) : std::nullopt);
    json.add("likelihood", verdict ? std::optional(nameOf(verdict->likelihood)) : std::nullopt);
    json.add("evidence", verdict ? std::optional(verdict->evidence) : std::nullopt);
    json.add("address", episode.address);
    json.add("interface", episode.interface);
    json.add("pingsLost", episode.pingsLost);
}

void addLists(JsonText& json, const Report& report, const UtcOffset& offset) {
    json.beginList("outages");
    for (const OutageEntry& outage : report.outages) {
        json.beginItem();
        addOutage(json, outage, offset);
        json.endObject();
    }
    json.endList();
    json.beginList("worstHours");
    for (const HourSummary& hour : report.worstHours) {
        json.beginItem();
        json.add("start", LocalText::isoTime(hour.span.from, offset));
        json.add("downSeconds", hour.availability.down);
        json.add("lossPercent", hour.figures.lossPercent());
        json.add("percentile95Ms", hour.figures.percentile95Ms());
        json.endObject();
    }
    json.endList();
    json.beginList("days");
    for (const DaySummary& day : report.days) {
        json.beginItem();
        json.add("day", LocalText::day(day.day));
        json.add("percent", day.availability.percent());
        json.add("watchedSeconds", day.availability.watched);
        json.add("outages", day.outages);
        json.endObject();
    }
    json.endList();
}

} // namespace

std::string reportJson(const Report& report, const UtcOffset& offset) {
    JsonText json;
    const bool isKnown = !report.span.isEmpty();
    const auto time = [&](HistoryTime when) {
        return isKnown ? std::optional(LocalText::isoTime(when, offset)) : std::nullopt;
    };
    json.add("host", report.host);
    json.add("since", time(report.span.from));
    json.add("until", time(report.span.to));
    json.beginObject("availability");
    addAvailability(json, report.availability);
    json.endObject();
    json.beginObject("figures");
    addFigures(json, report.figures);
    json.endObject();
    addLists(json, report, offset);
    return json.take() + "\n";
}

} // namespace tarnwick
