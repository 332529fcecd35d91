// How the status item is presented to one panel: all decisions, as one value.
#pragma once

#include "platform/panel/PanelHosts.h"
#include "platform/ports/FacePainter.h"
#include "platform/ports/StatusItem.h"

#include <string>

namespace tarnwick {

struct ItemPresentation {
    static constexpr const char* name = "Tarnwick";

    StatusItem::Form form = StatusItem::Form::square; ///< never automatic
    bool showsText = false;                           ///< in this form the panel has room for the whole title
    Ink ink = Ink::light;
    StatusFace imageFace{}; ///< reduced to what the image shows in this form
    std::string iconName{}; ///< in the icon theme; empty: the image is sent
    std::string label{};
    std::string labelGuide{}; ///< the widest text that the label will have
    std::string toolTipTitle{};
    std::string toolTipText{};
    std::string spoken{}; ///< by assistive technology

    /// Whether the panel draws another icon than for `other`.
    [[nodiscard]] bool hasOtherIcon(const ItemPresentation& other) const;

    friend bool operator==(const ItemPresentation&, const ItemPresentation&) = default;
};

/// `hasIconTheme`: icons may be sent by name.
[[nodiscard]] ItemPresentation present(
    const ItemState& state, const PanelHost& host, Ink ink, bool hasIconTheme, const FacePainter& painter);

} // namespace tarnwick
