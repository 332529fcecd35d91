// The table of panels that show status items: the only place that tells panels apart.
#pragma once

#include "platform/ports/FacePainter.h"
#include "platform/ports/StatusItem.h"
#include "platform/theme/ThemeFolders.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

/// Whether a panel reads a tool tip as markup.
enum class ToolTipMarkup {
    always,  ///< as the protocol allows
    guessed, ///< only if the text looks like markup; line breaks work only in plain text
};

struct PanelHost {
    std::string_view process{};                       ///< the kernel's name of it; empty: any other panel
    StatusItem::Form form = StatusItem::Form::square; ///< the best one; never automatic
    bool drawsLabel = false;
    bool ignoresLabelGuide = false;             ///< the label's width follows its text
    bool recolorsSymbolicIcons = false;         ///< those that are sent by name
    std::optional<Ink> fixedInk = std::nullopt; ///< its background follows no setting
    std::optional<Ink> usualInk = std::nullopt; ///< on the background that it has unless a user changes it
    ThemeReader theme = nullptr;                ///< reads its background
    bool hasOwnDarkMode = false;                ///< a setting beside the desktop's, see `ColorScheme`
    bool givesGlobalPositions = true;           ///< of clicks: desktop coordinates, as the protocol says
    bool showsToolTipTitleOnly = false;
    ToolTipMarkup toolTipMarkup = ToolTipMarkup::always; ///< of the tool tip's part that it shows
    /// It reads the menu as soon as it takes the item. While the menu is unread, the item is not taken.
    bool readsMenuAtOnce = false;
    /// It draws the label only once it is told another one than it has read first.
    bool ignoresFirstLabel = false;
};

/// The entry for a process name, or the one for any other panel.
[[nodiscard]] const PanelHost& panelHost(std::string_view process);

/// The panel that shows the items. `hosts` are the processes that announce themselves as panels; `watcher` is
/// the one that keeps the list of items, often a panel too. Empty names are processes not known yet.
[[nodiscard]] const PanelHost& panelHost(const std::vector<std::string>& hosts, const std::string& watcher);

/// What is known of backgrounds at present.
struct Backgrounds {
    std::optional<bool> panelIsDark = std::nullopt;   ///< the panel's own setting
    std::optional<bool> themeIsDark = std::nullopt;   ///< the panel's theme
    std::optional<bool> desktopIsDark = std::nullopt; ///< what the user prefers for the desktop
    Ink fallback = Ink::dark;                         ///< where nothing is known
};

/// The ink that the user has chosen, else the one that stands out from the panel. Where the background is
/// only guessed, the face is on a plate.
[[nodiscard]] Ink inkFor(StatusItem::InkChoice chosen, const PanelHost& host, const Backgrounds& backgrounds);

/// Of the names that a process goes by, the one that is in the table, else the first. Empty without a name.
[[nodiscard]] std::string panelProcess(const std::vector<std::string>& names);

} // namespace tarnwick
