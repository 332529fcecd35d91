#include "platform/panel/ItemPresentation.h"

#include "platform/bus/BusText.h"

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

using Form = StatusItem::Form;
using Icon = StatusFace::Icon;

/// A space as wide as a digit. Panels do not drop it at the end of a text.
constexpr const char* figureSpace = "\u2007";

StatusFace shownInImage(const StatusFace& face, Form form) {
    StatusFace shown{.icon = face.icon, .activeBars = face.activeBars};
    switch (form) {
    case Form::label:
        break;
    case Form::wide:
        shown.title = face.title;
        shown.textSlot = face.title ? face.textSlot : 0;
        break;
    case Form::square:
    case Form::automatic:
        shown.isDown = face.isDown;
        shown.figure = face.figure;
        shown.title = face.figure.empty() ? face.title : face.figure;
        break;
    }
    return shown;
}

std::string symbolicName(const StatusFace& face) {
    switch (face.icon) {
    case Icon::bars:
        return "tarnwick-bars-" + std::to_string(face.activeBars) + "-symbolic";
    case Icon::failed:
        return "tarnwick-failed-symbolic";
    case Icon::none:
        break;
    }
    return "";
}

bool hasTextInImage(const StatusFace& shown, Form form) {
    if (form == Form::square && shown.icon == Icon::failed) {
        return false;
    }
    return shown.title.has_value();
}

/// Fills `text` up with figure spaces, to about this width in points.
std::string padded(const std::string& text, double width, const FacePainter& painter) {
    // Widths are rounded up to whole points, so many spaces are measured at once.
    constexpr int measured = 20;
    std::string spaces;
    for (int i = 0; i < measured; ++i) {
        spaces += figureSpace;
    }
    const double spaceWidth = painter.textWidth(spaces) / measured;
    const double missing = width - painter.textWidth(text);
    std::string result = text;
    if (spaceWidth > 0) {
        constexpr long mostSpaces = 40;
        for (long i = std::min(std::lround(missing / spaceWidth), mostSpaces); i > 0; --i) {
            result += figureSpace;
        }
    }
    return result;
}

bool hasRoomForText(Form form, const PanelHost& host) {
    // A panel that is not known may draw labels.
    const bool drawsLabel = host.drawsLabel || host.process.empty();
    return form == Form::wide || (form == Form::label && drawsLabel);
}

void addLabel(
    ItemPresentation& presentation, const StatusFace& face, const PanelHost& host,
    const FacePainter& painter) {
    const bool isTextInImage = presentation.form != Form::label;
    if (!face.title || (host.drawsLabel && isTextInImage)) {
        return;
    }
    presentation.label = host.ignoresLabelGuide ? padded(*face.title, face.textSlot, painter) : *face.title;
    presentation.labelGuide = face.widestTitle;
}

/// Escapes `text` where the panel would read it as markup.
std::string escaped(const std::string& text, ToolTipMarkup markup) {
    if (text.find_first_of("<>&") == std::string::npos) {
        return text;
    }
    if (markup == ToolTipMarkup::guessed) {
        // With these tags the panel is sure to read it as markup.
        return "<span>" + asMarkup(text, "<br>") + "</span>";
    }
    return asMarkup(text);
}

void addToolTip(ItemPresentation& presentation, const std::string& text, const PanelHost& host) {
    const std::string shown = escaped(text, host.toolTipMarkup);
    if (host.showsToolTipTitleOnly && !text.empty()) {
        presentation.toolTipTitle = shown;
    } else {
        presentation.toolTipTitle = ItemPresentation::name;
        presentation.toolTipText = shown;
    }
}

} // namespace

bool ItemPresentation::hasOtherIcon(const ItemPresentation& other) const {
    if (iconName != other.iconName) {
        return true;
    }
    // A panel that has the icon's name ignores the image.
    return iconName.empty() && (form != other.form || ink != other.ink || imageFace != other.imageFace);
}

ItemPresentation present(
    const ItemState& state, const PanelHost& host, Ink ink, bool hasIconTheme, const FacePainter& painter) {
    ItemPresentation presentation;
    presentation.form = state.form == Form::automatic ? host.form : state.form;
    presentation.showsText = hasRoomForText(presentation.form, host);
    presentation.ink = ink;
    presentation.imageFace = shownInImage(state.face, presentation.form);
    // The panel would recolor a named icon as it likes.
    const bool isInkChosen = state.ink != StatusItem::InkChoice::automatic;
    if (hasIconTheme && host.recolorsSymbolicIcons && !isInkChosen
        && !hasTextInImage(presentation.imageFace, presentation.form)) {
        presentation.iconName = symbolicName(presentation.imageFace);
    }
    addLabel(presentation, state.face, host, painter);
    addToolTip(presentation, state.toolTip, host);
    presentation.spoken = state.accessibilityValue.empty()
                              ? std::string(ItemPresentation::name)
                              : std::string(ItemPresentation::name) + ": " + state.accessibilityValue;
    return presentation;
}

} // namespace tarnwick
