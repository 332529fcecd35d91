// The pictures beside the menu's items, in the color of its text.
#pragma once

#include <QColor>
#include <QPixmap>
#include <QString>

namespace tarnwick {

/// The symbolic icon of this name: the desktop theme's, or ours where it has none. Drawn as a mask in
/// `color`, in a square of `side` device-independent pixels. Kept once drawn. Main thread.
[[nodiscard]] QPixmap menuIcon(const QString& name, int side, const QColor& color, double pixelRatio);

} // namespace tarnwick
