// What a certain panel is told of the status item: the decisions, as values.
#pragma once

#include "platform/panel/PanelHosts.h"
#include "platform/ports/FacePainter.h"
#include "platform/ports/StatusItem.h"

#include <string>

namespace tarnwick {

/// What the program wants to be shown, whatever the panel.
struct ItemState {
    StatusFace face{};
    StatusItem::PanelFace form = StatusItem::PanelFace::automatic;
    std::string toolTip{};
    std::string accessibilityValue{};
};

struct ItemPresentation {
    static constexpr const char* name = "Tarnwick";

    StatusItem::PanelFace form = StatusItem::PanelFace::square; ///< never automatic
    Ink ink = Ink::light;
    StatusFace imageFace{}; ///< without what the image does not show in this form
    std::string iconName{}; ///< of the icon theme; empty: only the image will do
    std::string label{};
    std::string labelGuide{}; ///< the widest text that the label will have
    std::string toolTipTitle{};
    std::string toolTipText{};
    std::string spoken{}; ///< by assistive technology

    /// Whether the panel would draw another icon than for `other`.
    [[nodiscard]] bool hasOtherIcon(const ItemPresentation& other) const;

    friend bool operator==(const ItemPresentation&, const ItemPresentation&) = default;
};

/// `hasIconTheme` tells whether icons may go by name.
[[nodiscard]] ItemPresentation present(
    const ItemState& state, const PanelHost& host, Ink ink, bool hasIconTheme, const FacePainter& painter);

} // namespace tarnwick
