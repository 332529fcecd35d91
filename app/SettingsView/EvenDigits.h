// Fonts whose digits are equally wide.
#pragma once

#include <QFont>

namespace tarnwick {

/// The font itself, or in its size the desktop's fixed one where its digits differ in width.
[[nodiscard]] QFont withEvenDigits(const QFont& font);

} // namespace tarnwick
