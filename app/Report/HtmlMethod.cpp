#include "app/Report/HtmlMethod.h"

#include "app/Report/Html.h"
#include "app/Report/LocalText.h"

namespace tarnwick {

namespace {

using Html::attribute;
using Html::element;

std::string methodEntry(const std::string& name, const std::string& text) {
    return element("dt", name) + element("dd", text);
}

/// "one each 1.0 s on average", as far as it is known. Pings are not counted while the connection is down.
std::string intervalText(const Report& report) {
    const double seconds = report.availability.watched - report.availability.down;
    if (report.figures.sent == 0 || seconds <= 0) {
        return "at a steady interval";
    }
    return "one every " + LocalText::number(seconds / static_cast<double>(report.figures.sent), 1)
           + " s on average";
}

} // namespace

std::string htmlMethod(const Report& report, const ReportOrigin& origin, const UtcOffset& offset) {
    std::string entries = methodEntry(
        "Pings",
        "ICMP echo requests of 24 bytes to the host, " + intervalText(report)
            + ". A ping without an answer in time is lost. Percentiles are within 2.2%; jitter is the mean "
              "difference between consecutive answers.");
    entries += methodEntry(
        "Outage", "No answer for 8 s (longer at a longer interval), no such host, or no network. It counts "
                  "from the first "
                  "lost ping until the next answer. Pings sent during an outage do not count as loss.");
    entries += methodEntry(
        "Whose fault", "Concluded from pings with a limited number of hops, which the routers on the way "
                       "answer, and from what "
                       "this computer knows of its own link. Certain: the system or a device on the way has "
                       "said so. Likely: the "
                       "answers leave a chance of 15% at most for anything else. Possible: of 40% at most. "
                       "Else it is not clear.");
    entries += methodEntry(
        "Availability",
        "The time watched without the time down, as a share of the time watched; rounded down.");
    entries += methodEntry(
        "Made", "By Tarnwick " + Html::escaped(origin.version) + " on "
                    + LocalText::minute(origin.made, offset) + " " + LocalText::zone(origin.made, offset)
                    + ", on the computer that sent the pings and by its clock.");
    return element(
        "section",
        element("h2", "How it was measured") + element("dl", attribute("class", "method"), entries));
}

} // namespace tarnwick
