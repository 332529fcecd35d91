#include "app/Report/HtmlOutages.h"

#include "app/Report/BlameText.h"
#include "app/Report/Html.h"
#include "app/Report/LocalText.h"

#include <algorithm>
#include <map>
#include <utility>

namespace tarnwick {

namespace {

using Html::attribute;
using Html::element;

/// Longer ones are not of this program, and would not fit.
constexpr std::size_t longestEvidence = 160;

/// What has room on the second page, and on a line of a column there. Tried with a wide font.
constexpr std::size_t mostLines = 22;
constexpr std::size_t fewestLines = 2;
constexpr std::size_t evidenceWidth = 54;
constexpr std::size_t wayWidth = 24;

struct BlameSum {
    Blame blame = Blame::unclear;
    std::size_t count = 0;
    std::chrono::seconds length{};
};

Blame blameFor(const OutageEntry& outage) {
    return outage.episode.verdict ? outage.episode.verdict->blame : Blame::unclear;
}

/// The longest sum first.
std::vector<BlameSum> sumsOf(const std::vector<OutageEntry>& outages) {
    std::map<Blame, BlameSum> byBlame;
    for (const OutageEntry& outage : outages) {
        BlameSum& sum = byBlame[blameFor(outage)];
        sum.blame = blameFor(outage);
        ++sum.count;
        sum.length += outage.length;
    }
    std::vector<BlameSum> sums;
    sums.reserve(byBlame.size());
    for (const auto& [blame, sum] : byBlame) {
        sums.push_back(sum);
    }
    std::ranges::sort(sums, {}, [](const BlameSum& sum) { return std::pair(-sum.length, sum.blame); });
    return sums;
}

std::string sumsText(const std::vector<OutageEntry>& outages) {
    std::string items;
    for (const BlameSum& sum : sumsOf(outages)) {
        const std::string name = element("strong", blameText(sum.blame));
        items += element(
            "li", name + " " + std::to_string(sum.count) + (sum.count == 1 ? " outage, " : " outages, ")
                      + LocalText::length(sum.length));
    }
    return element("ul", attribute("class", "sums"), items);
}

/// Before its evidence.
std::string verdictText(const Verdict& verdict) {
    return std::string(blameText(verdict.blame)) + ", " + std::string(nameOf(verdict.likelihood));
}

std::string evidenceText(const Verdict& verdict) {
    return Html::shortened(verdict.evidence, longestEvidence);
}

std::string verdictCell(const std::optional<Verdict>& verdict) {
    const std::string text =
        verdict ? element("strong", verdictText(*verdict)) + ": " + Html::escaped(evidenceText(*verdict))
                : element("strong", blameText(Blame::unclear)) + ": no verdict was reached.";
    return element("td", attribute("class", "why"), text);
}

std::string wayText(const Episode& episode) {
    return (episode.address.empty() ? "no address" : episode.address)
           + (episode.interface.empty() ? ", no interface" : " over " + episode.interface) + ", "
           + std::to_string(episode.pingsLost) + " pings lost";
}

std::string outageRow(const OutageEntry& outage, const UtcOffset& offset) {
    const Episode& episode = outage.episode;
    const std::string start = element(
        "time", attribute("datetime", LocalText::isoTime(episode.start, offset)),
        LocalText::time(episode.start, offset));
    std::string row = element("th", attribute("scope", "row"), start);
    row += element("td", LocalText::length(outage.length) + (outage.lasts ? ", and it lasts" : ""));
    return element("tr", row + verdictCell(episode.verdict) + element("td", Html::escaped(wayText(episode))));
}

/// That its row takes, about.
std::size_t linesOf(const OutageEntry& outage) {
    const auto linesFor = [](const std::string& text, std::size_t width) { return text.size() / width + 1; };
    const Episode& episode = outage.episode;
    const std::string why =
        episode.verdict ? verdictText(*episode.verdict) + evidenceText(*episode.verdict) : std::string();
    return std::max({fewestLines, linesFor(why, evidenceWidth), linesFor(wayText(episode), wayWidth)});
}

/// The longest that have room, in the order of their starts.
std::vector<OutageEntry> shownOf(std::vector<OutageEntry> outages) {
    std::ranges::sort(outages, {}, [](const OutageEntry& outage) {
        return std::pair(-outage.length, outage.episode.start);
    });
    std::size_t lines = 0;
    const auto end = std::ranges::find_if(outages, [&](const OutageEntry& outage) {
        lines += linesOf(outage);
        return lines > mostLines;
    });
    outages.erase(end, outages.end());
    std::ranges::sort(outages, {}, [](const OutageEntry& outage) { return outage.episode.start; });
    return outages;
}

std::string headRow() {
    std::string cells;
    for (const char* const name : {"Began", "Length", "Whose fault, and why", "Pinged"}) {
        cells += element("th", attribute("scope", "col"), name);
    }
    return element("thead", element("tr", cells));
}

std::string tableCaption(std::size_t shown, std::size_t count) {
    if (shown == count) {
        return element("caption", "Each outage, in the order of their starts");
    }
    return element(
        "caption", "The " + std::to_string(shown) + " longest of " + std::to_string(count)
                       + " outages, in the order of their starts. The report with --format csv has the other "
                       + std::to_string(count - shown) + ", too.");
}

} // namespace

std::string htmlOutages(const Report& report, const UtcOffset& offset) {
    const std::size_t count = report.outages.size();
    const std::string heading = element("h2", "Outages: " + std::to_string(count));
    if (count == 0) {
        return element(
            "section", heading + element("p", "The connection was never down while it was watched."));
    }
    const std::vector<OutageEntry> shown = shownOf(report.outages);
    std::string rows;
    for (const OutageEntry& outage : shown) {
        rows += outageRow(outage, offset);
    }
    const std::string table = element(
        "table", attribute("class", "outages"),
        tableCaption(shown.size(), count) + headRow() + element("tbody", rows));
    return element("section", heading + sumsText(report.outages) + table);
}

} // namespace tarnwick
