#include "platform/panel/PanelHosts.h"

#include "platform/theme/PanelThemes.h"

#include <algorithm>
#include <array>

namespace tarnwick {

namespace {

using Form = StatusItem::Form;

// Measured with the panels of Debian 12 and 13.
constexpr PanelHost gnomeShell{
    .process = "gnome-shell",
    .form = Form::label,
    .drawsLabel = true,
    .ignoresLabelGuide = true,
    .recolorsSymbolicIcons = true,
    .fixedInk = Ink::light,
    .readsMenuAtOnce = true,
    .ignoresFirstLabel = true,
};

constexpr PanelHost waybar{
    .process = "waybar",
    .form = Form::wide,
    .usualInk = Ink::light,
    .givesGlobalPositions = false,
};

constexpr PanelHost xfcePanel{
    .process = "xfce4-panel",
    .recolorsSymbolicIcons = true,
    .hasOwnDarkMode = true,
};

constexpr PanelHost lxqtPanel{
    .process = "lxqt-panel",
    .usualInk = Ink::light,
    .theme = lxqtPanelTheme,
    .showsToolTipTitleOnly = true,
    .toolTipMarkup = ToolTipMarkup::guessed,
};

constexpr PanelHost plasma{
    .process = "plasmashell",
    .recolorsSymbolicIcons = true,
    .theme = plasmaPanelTheme,
    .toolTipMarkup = ToolTipMarkup::guessed,
};

constexpr PanelHost named(PanelHost host, std::string_view process) {
    host.process = process;
    return host;
}

constexpr std::array<PanelHost, 8> table{
    gnomeShell,
    waybar,
    xfcePanel,
    named(xfcePanel, "wrapper-2.0"), // the process of that panel's plug-ins
    lxqtPanel,
    plasma,
    named(plasma, "kded5"), // keeps the list of items for that panel
    named(plasma, "kded6"),
};

constexpr PanelHost anyOther{};

bool isKnown(const PanelHost& host) {
    return !host.process.empty();
}

} // namespace

const PanelHost& panelHost(std::string_view process) {
    const auto* const entry = std::ranges::find(table, process, &PanelHost::process);
    return entry != table.end() && !process.empty() ? *entry : anyOther;
}

const PanelHost& panelHost(const std::vector<std::string>& hosts, const std::string& watcher) {
    for (const std::string& process : hosts) {
        if (const PanelHost& host = panelHost(process); isKnown(host)) {
            return host;
        }
    }
    return panelHost(watcher);
}

Ink inkFor(StatusItem::InkChoice chosen, const PanelHost& host, const Backgrounds& backgrounds) {
    if (chosen != StatusItem::InkChoice::automatic) {
        return chosen == StatusItem::InkChoice::light ? Ink::light : Ink::dark;
    }
    if (host.fixedInk) {
        return *host.fixedInk;
    }
    const auto known = host.hasOwnDarkMode ? backgrounds.panelIsDark : backgrounds.themeIsDark;
    if (known) {
        return inkOn(*known);
    }
    if (host.usualInk) {
        return onPlate(*host.usualInk);
    }
    return onPlate(backgrounds.desktopIsDark ? inkOn(*backgrounds.desktopIsDark) : backgrounds.fallback);
}

std::string panelProcess(const std::vector<std::string>& names) {
    const auto known =
        std::ranges::find_if(names, [](const std::string& name) { return isKnown(panelHost(name)); });
    if (known != names.end()) {
        return *known;
    }
    return names.empty() ? std::string() : names.front();
}

} // namespace tarnwick
