#include "app/Report/ReportHtml.h"

#include "app/Report/Html.h"
#include "app/Report/HtmlChart.h"
#include "app/Report/HtmlDays.h"
#include "app/Report/HtmlDrawing.h"
#include "app/Report/HtmlFigures.h"
#include "app/Report/HtmlMethod.h"
#include "app/Report/HtmlOutages.h"
#include "app/Report/HtmlOverview.h"
#include "app/Report/HtmlStyle.h"

namespace tarnwick {

namespace {

using Html::attribute;
using Html::element;
using Html::emptyElement;

/// Forbids whatever a page could load or run, should a text ever slip through as markup.
constexpr std::string_view contentPolicy =
    "default-src 'none'; style-src 'unsafe-inline'; base-uri 'none'; form-action 'none'";

std::string pageHead(const Report& report) {
    std::string head = emptyElement("meta", attribute("charset", "utf-8"));
    head += emptyElement(
        "meta", attribute("http-equiv", "Content-Security-Policy") + attribute("content", contentPolicy));
    head += emptyElement(
        "meta", attribute("name", "viewport") + attribute("content", "width=device-width, initial-scale=1"));
    head += emptyElement("meta", attribute("name", "referrer") + attribute("content", "no-referrer"));
    head += element("title", "Connection to " + Html::escaped(report.host));
    head += element("style", htmlStyle());
    return element("head", head);
}

std::string firstPage(const Report& report, const UtcOffset& offset) {
    std::string page = htmlHeader(report, offset);
    if (report.span.isEmpty()) {
        return page + element("p", "Nothing is known of " + Html::escaped(report.host) + " in this time.");
    }
    page += htmlAvailability(report);
    page += element("section", element("h2", "Over time") + htmlChart(report, offset));
    return page + element("section", element("h2", "Days") + htmlDays(report.days));
}

std::string secondPage(const Report& report, const ReportOrigin& origin, const UtcOffset& offset) {
    std::string page = htmlOutages(report, offset);
    page += element(
        "div", attribute("class", "pair"),
        htmlFigures(report.figures) + htmlWorstHours(report.worstHours, offset));
    return element("div", attribute("class", "second"), page + htmlMethod(report, origin, offset));
}

} // namespace

std::string reportHtml(const Report& report, const ReportOrigin& origin, const UtcOffset& offset) {
    const std::string body = htmlHatching()
                             + element(
                                 "main", firstPage(report, offset)
                                             + (report.span.isEmpty() ? htmlMethod(report, origin, offset)
                                                                      : secondPage(report, origin, offset)));
    return "<!DOCTYPE html>\n"
           + element(
               "html", attribute("xmlns", "http://www.w3.org/1999/xhtml") + attribute("lang", "en"),
               pageHead(report) + element("body", body))
           + "\n";
}

} // namespace tarnwick
