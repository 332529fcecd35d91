// Where the drop-down opens.
#pragma once

#include <QPoint>
#include <QRect>

#include <optional>

namespace tarnwick::DropDownPlacement {

/// What the drop-down may cover of the part of a screen that windows may take.
[[nodiscard]] QRect room(const QRect& available);

/// The drop-down's frame: beside the click, on the side away from the panel, inside the part of the screen
/// that windows may take. Without a click it is where panels have their items: in the corner at the end of
/// the panel, at the upper right without one.
[[nodiscard]] QRect place(
    std::optional<QPoint> click, QSize size, const QRect& screen, const QRect& available);

/// The frame where nothing tells where items are: in the middle of what windows may take.
[[nodiscard]] QRect inMiddle(QSize size, const QRect& available);

/// The screen in the units of the overlay, which covers most of it. GNOME counts screens in pixels unless the
/// user has let it scale by fractions, and windows in units of `ratio` pixels; the toolkit passes this on up
/// to version 6.4. The corner stays where it is.
[[nodiscard]] QRect inUnits(const QRect& screen, QSize overlay, double ratio);

/// What an overlay covers of its screen.
struct Overlaid {
    QPoint origin;   ///< its upper left corner
    QRect available; ///< what windows may take of it
};

/// A compositor tells the size of an overlay and not its place: what it leaves free of the screen it takes
/// for the panel at the edge next to the click. Where it covers the whole screen and the click is at an edge,
/// a panel of a usual size lies there.
[[nodiscard]] Overlaid overlaid(std::optional<QPoint> click, const QRect& screen, QSize overlay);

} // namespace tarnwick::DropDownPlacement
