#include "app/Report/HtmlFigures.h"

#include "app/Report/Html.h"
#include "app/Report/LocalText.h"

#include <array>
#include <initializer_list>
#include <utility>

namespace tarnwick {

namespace {

using Html::attribute;
using Html::element;

std::string headCells(std::initializer_list<const char*> names) {
    std::string cells;
    for (const char* const name : names) {
        cells += element("th", attribute("scope", "col"), name);
    }
    return element("thead", element("tr", cells));
}

std::string lossText(const PeriodFigures& figures, int decimals) {
    const auto loss = figures.lossPercent();
    return loss ? LocalText::number(*loss, decimals) + "%" : "unknown";
}

std::string hourRow(const HourSummary& hour, const UtcOffset& offset) {
    const std::string start = element(
        "time", attribute("datetime", LocalText::isoTime(hour.span.from, offset)),
        LocalText::minute(hour.span.from, offset));
    std::string row = element("th", attribute("scope", "row"), start);
    row += element("td", LocalText::length(hour.availability.down));
    row += element("td", lossText(hour.figures, 1));
    row += element("td", LocalText::milliseconds(hour.figures.percentile95Ms()));
    return element("tr", row);
}

} // namespace

std::string htmlFigures(const PeriodFigures& figures) {
    const bool isAnswered = figures.replied > 0;
    const auto ifAnswered = [&](double ms) {
        return LocalText::milliseconds(isAnswered ? std::optional(ms) : std::nullopt);
    };
    std::string rows;
    for (const auto& [name, text] :
         {std::pair("Fastest", ifAnswered(figures.fastestMs)),
          std::pair("Median", LocalText::milliseconds(figures.medianMs())),
          std::pair("95th percentile", LocalText::milliseconds(figures.percentile95Ms())),
          std::pair("99th percentile", LocalText::milliseconds(figures.percentile99Ms())),
          std::pair("Slowest", ifAnswered(figures.slowestMs)),
          std::pair("Jitter", LocalText::milliseconds(figures.jitterMs())),
          std::pair("Pings sent", std::to_string(figures.sent)),
          std::pair("Pings lost", std::to_string(figures.lost)), std::pair("Loss", lossText(figures, 2))}) {
        rows += element("tr", element("th", attribute("scope", "row"), name) + element("td", text));
    }
    const std::string table =
        element("table", element("caption", "While the connection was not down") + element("tbody", rows));
    return element("section", element("h2", "Latency and loss") + table);
}

std::string htmlWorstHours(const std::vector<HourSummary>& hours, const UtcOffset& offset) {
    if (hours.empty()) {
        return "";
    }
    std::string rows;
    for (const HourSummary& hour : hours) {
        rows += hourRow(hour, offset);
    }
    const std::string table = element(
        "table", element("caption", "By the time down, then by the loss")
                     + headCells({"Hour from", "Down", "Loss", "95th percentile"}) + element("tbody", rows));
    return element("section", element("h2", "Worst hours") + table);
}

} // namespace tarnwick
