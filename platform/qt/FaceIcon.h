// A status face as an icon of the toolkit's.
#pragma once

#include "platform/ports/FacePainter.h"

#include <QIcon>

namespace tarnwick {

/// The square face, painted anew for each size that is asked for, in exact pixels. The painter outlives the
/// icon and its copies.
[[nodiscard]] QIcon faceIcon(const StatusFace& face, const FacePainter& painter, Ink ink);

} // namespace tarnwick
