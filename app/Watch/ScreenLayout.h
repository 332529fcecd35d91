// What the terminal view shows, and where, at any size.
#pragma once

#include "app/Reading/Format.h"
#include "app/Reading/Reading.h"
#include "app/Watch/Canvas.h"

namespace tarnwick {

struct ScreenOptions {
    Format::Grouping grouping{};
    bool ascii = false;     ///< the terminal shows nothing else
    bool readsKeys = false; ///< so that the screen tells which
};

/// From 40 columns by 6 rows up everything has its place; a smaller screen shows what fits.
[[nodiscard]] Canvas drawScreen(const Reading& reading, const ScreenOptions& options, ScreenSize size);

} // namespace tarnwick
