// What is known of the panels that show status items: the one place that tells them apart.
#pragma once

#include "platform/ports/FacePainter.h"
#include "platform/ports/StatusItem.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

/// Whether a panel reads a tool tip as markup.
enum class ToolTipMarkup {
    always,  ///< as the protocol allows
    guessed, ///< only where the text looks like markup; line breaks count in plain text alone
};

struct PanelHost {
    std::string_view process{}; ///< as the kernel names it; empty: any other panel
    StatusItem::PanelFace form = StatusItem::PanelFace::square; ///< that it shows best; never automatic
    bool drawsLabel = false;
    bool ignoresLabelGuide = false;             ///< the label's width follows its text
    bool recolorsSymbolicIcons = false;         ///< those that it gets by name
    std::optional<Ink> fixedInk = std::nullopt; ///< its background is the same whatever the user has set
    bool hasOwnDarkMode = false;      ///< a setting of its own beside the desktop's, see `ColorScheme`
    bool givesGlobalPositions = true; ///< a click's position is one on the desktop, as the protocol says
    bool showsToolTipTitleOnly = false;
    ToolTipMarkup toolTipMarkup = ToolTipMarkup::always; ///< in the part of the tool tip that it shows
    bool readsMenuAtOnce = false; ///< a panel that has not read the menu has not taken the item
};

/// The entry for a process name, or the one for any other panel.
[[nodiscard]] const PanelHost& panelHost(std::string_view process);

/// The panel that shows the items. `hosts` are the processes that announce themselves as panels; `watcher` is
/// the one that keeps the list of items, often a panel too. Empty names are processes not known yet.
[[nodiscard]] const PanelHost& panelHost(const std::vector<std::string>& hosts, const std::string& watcher);

/// What is known of backgrounds at present.
struct Backgrounds {
    std::optional<bool> panelIsDark = std::nullopt;   ///< the panel's own setting
    std::optional<bool> desktopIsDark = std::nullopt; ///< what the user prefers for the desktop
    Ink fallback = Ink::dark;                         ///< where nothing is known
};

[[nodiscard]] Ink inkFor(const PanelHost& host, const Backgrounds& backgrounds);

/// Name of a process, empty when it has gone: as the kernel has it or, where the table has no entry for that,
/// that of the file it runs.
[[nodiscard]] std::string processName(unsigned pid);

} // namespace tarnwick
