// Panels that keep windows clear of an edge of the screen, on an X11 display.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace tarnwick::X11 {

/// In pixels of the whole desktop.
struct Area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    friend bool operator==(const Area&, const Area&) = default;
};

/// As `_NET_WM_STRUT_PARTIAL` has them: pixels kept clear at the left, right, top and bottom edge of the
/// whole desktop, then where the kept part begins and ends along each of these edges.
using Strut = std::array<std::uint32_t, 12>;

struct Dock {
    Area window{};
    Strut strut{};
};

struct Docks {
    Area desktop{}; ///< around all monitors
    std::vector<Dock> docks{};

    /// What the docks that lie on a monitor leave of it for windows.
    [[nodiscard]] Area freeOf(const Area& monitor) const;
};

/// Those of the display that `DISPLAY` names; none without such a display, or without a window manager that
/// lists its windows. Waits for the server's answers, as the toolkit does.
[[nodiscard]] Docks findDocks();

} // namespace tarnwick::X11
