// Where windows open.
#pragma once

#include <QSize>

class QScreen;

namespace tarnwick {

/// On which the pointer is, else the first one.
[[nodiscard]] QScreen& screenOfUser();

/// The largest content of a window for which its title and its frame leave room.
[[nodiscard]] QSize spareSize(const QScreen& screen);

} // namespace tarnwick
