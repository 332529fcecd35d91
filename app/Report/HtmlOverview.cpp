#include "app/Report/HtmlOverview.h"

#include "app/Report/Html.h"
#include "app/Report/HtmlDrawing.h"
#include "app/Report/LocalText.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace tarnwick {

namespace {

using Html::attribute;
using Html::element;
using Html::emptyElement;

/// Names of the name system are not longer; what is may not fill the page.
constexpr std::size_t longestHostShown = 253;

constexpr double stripWidth = 720;

/// A part of the report's time, in seconds.
struct TimePart {
    const char* kind; ///< for the style sheet
    const char* name;
    double seconds;
    const char* meaning;
};

std::array<TimePart, 5> partsOf(const Availability& availability) {
    return {{
        {"good", "Up", availability.watched - availability.down, "pings were answered"},
        {"down", "Down", availability.down, "no ping was answered"},
        {"unwatched", "Asleep", availability.asleep, "the computer slept; does not count"},
        {"unwatched", "Paused", availability.paused, "by the user; does not count"},
        {"unwatched", "Not watched", availability.notWatched,
         "the program did not run, or pinged another host; does not count"},
    }};
}

/// How wide each part is: what is there can be seen, at the largest one's cost.
std::array<double, 5> stripWidths(const std::array<TimePart, 5>& parts, double whole) {
    constexpr double least = 2;
    std::array<double, 5> widths{};
    std::ranges::transform(parts, widths.begin(), [&](const TimePart& part) {
        return part.seconds > 0 ? std::max(part.seconds / whole * stripWidth, least) : 0;
    });
    *std::ranges::max_element(widths) += stripWidth - std::accumulate(widths.begin(), widths.end(), 0.0);
    return widths;
}

/// A strip of all parts, side by side.
std::string timeStrip(const std::array<TimePart, 5>& parts, double whole) {
    constexpr double height = 18;
    std::string drawing = element("title", "Where the time went");
    const std::array<double, 5> widths = stripWidths(parts, whole);
    double left = 0;
    for (std::size_t index = 0; index < parts.size(); ++index) {
        const double width = widths.at(index);
        if (width > 0) {
            drawing += emptyElement(
                "rect", attribute("class", parts.at(index).kind) + attribute("x", left)
                            + attribute("width", width) + attribute("height", height));
        }
        left += width;
    }
    return element(
        "svg",
        attribute("class", "strip") + attribute("role", "img") + attribute("viewBox", "0 0 720 18")
            + attribute("preserveAspectRatio", "none"),
        drawing);
}

std::string shareText(double seconds, double whole) {
    const double percent = seconds / whole * 100;
    // What is there must not look like nothing.
    return seconds > 0 && percent < 0.01 ? "below 0.01%" : LocalText::number(percent, 2) + "%";
}

std::string partRow(const TimePart& part, double whole) {
    std::string row = element("th", attribute("scope", "row"), htmlSign(part.kind) + part.name);
    row += element("td", LocalText::length(part.seconds));
    row += element("td", shareText(part.seconds, whole));
    return element("tr", row + element("td", part.meaning));
}

std::string partsTable(const std::array<TimePart, 5>& parts, double whole) {
    std::string heads;
    for (const char* const name : {"State", "Time", "Of the span", "Meaning"}) {
        heads += element("th", attribute("scope", "col"), name);
    }
    std::string rows;
    for (const TimePart& part : parts) {
        rows += partRow(part, whole);
    }
    return element(
        "table", attribute("class", "parts"),
        element("caption", "Where the time went") + element("thead", element("tr", heads))
            + element("tbody", rows));
}

std::string tile(const std::string& name, const std::string& value) {
    return element("div", element("dt", name) + element("dd", value));
}

std::string tiles(const Report& report) {
    const auto loss = report.figures.lossPercent();
    std::string text = tile("Outages", std::to_string(report.outages.size()));
    text += tile("Time down", LocalText::length(report.availability.down));
    text +=
        tile("Longest outage", report.outages.empty() ? "none" : LocalText::length(longestOutage(report)));
    text += tile("Loss while up", loss ? LocalText::number(*loss, 2) + "%" : "unknown");
    text += tile("Median latency", LocalText::milliseconds(report.figures.medianMs()));
    return element("dl", attribute("class", "tiles"), text);
}

std::string pageHeading(const std::string& host) {
    constexpr std::size_t longestLargeHost = 40;
    const char* const kind = host.size() > longestLargeHost ? "long" : "short";
    return element(
        "h1", attribute("class", kind),
        "Connection to " + Html::escaped(Html::shortened(host, longestHostShown)));
}

} // namespace

std::string htmlHeader(const Report& report, const UtcOffset& offset) {
    const Span& span = report.span.isEmpty() ? report.wanted : report.span;
    const auto moment = [&](HistoryTime time) {
        return element(
            "time", attribute("datetime", LocalText::isoTime(time, offset)), LocalText::minute(time, offset));
    };
    const std::string when = moment(span.from) + " to " + moment(span.to) + " ("
                             + LocalText::length(span.length()) + "), times in "
                             + LocalText::zones(span, offset);
    return element(
        "header",
        element("p", attribute("class", "kind"), "Report on an internet connection, measured by pings")
            + pageHeading(report.host) + element("p", when));
}

std::string htmlAvailability(const Report& report) {
    const Availability& availability = report.availability;
    const double whole = std::chrono::duration<double>(report.span.length()).count();
    const auto parts = partsOf(availability);
    const std::string large = element(
        "p", attribute("class", "large"),
        element("strong", LocalText::availability(availability.percent())) + " available");
    const std::string definition = element(
        "p", "The share of the time watched (" + LocalText::length(availability.watched)
                 + ") in which the connection was not down. Time asleep, paused or not watched counts "
                   "neither way.");
    return element(
        "section", element("h2", "Availability")
                       + element("div", attribute("class", "headline"), large + definition) + tiles(report)
                       + timeStrip(parts, whole) + partsTable(parts, whole));
}

} // namespace tarnwick
