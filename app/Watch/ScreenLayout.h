// What the terminal view shows, and where, at any size.
#pragma once

#include "app/Reading/Format.h"
#include "app/Reading/HistoryChart.h"
#include "app/Reading/Reading.h"
#include "app/Watch/Canvas.h"

namespace tarnwick {

struct ScreenOptions {
    Format::Grouping grouping{};
    bool ascii = false;     ///< the terminal shows nothing else
    bool readsKeys = false; ///< so that the screen tells which
    /// Stands in the place of the last five minutes; outlives the call. Null: these are shown.
    const HistoryChart::Chart* past = nullptr;
};

/// How many columns of a chart of the past a screen has room for, beside the scale.
[[nodiscard]] int pastColumnsOn(ScreenSize size);

/// From 40 columns by 6 rows up everything has its place; a smaller screen shows what fits.
[[nodiscard]] Canvas drawScreen(const Reading& reading, const ScreenOptions& options, ScreenSize size);

} // namespace tarnwick
