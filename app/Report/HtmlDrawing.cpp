#include "app/Report/HtmlDrawing.h"

#include "app/Report/Html.h"
#include "app/Report/LocalText.h"

namespace tarnwick {

namespace {

using Html::attribute;
using Html::element;
using Html::emptyElement;

} // namespace

std::string htmlDrawing(std::string_view kind, double width, double height, const std::string& content) {
    const std::string measure = "0 0 " + LocalText::number(width, 0) + " " + LocalText::number(height, 0);
    const std::string drawing = element(
        "svg", attribute("class", kind) + attribute("role", "img") + attribute("viewBox", measure), content);
    return element("div", attribute("class", "wide"), drawing);
}

std::string htmlSign(std::string_view kind) {
    const std::string shape =
        emptyElement("rect", attribute("class", kind) + attribute("width", 14) + attribute("height", 10));
    return element(
        "svg",
        attribute("class", "sign") + attribute("viewBox", "0 0 14 10") + attribute("aria-hidden", "true"),
        shape);
}

std::string htmlHatching() {
    const std::string stripe =
        emptyElement("rect", attribute("class", "stripe") + attribute("width", 2) + attribute("height", 6));
    const std::string ground =
        emptyElement("rect", attribute("class", "ground") + attribute("width", 6) + attribute("height", 6));
    const std::string pattern = element(
        "pattern",
        attribute("id", "hatching") + attribute("width", 6) + attribute("height", 6)
            + attribute("patternUnits", "userSpaceOnUse") + attribute("patternTransform", "rotate(45)"),
        ground + stripe);
    return element(
        "svg", attribute("class", "patterns") + attribute("aria-hidden", "true"), element("defs", pattern));
}

} // namespace tarnwick
