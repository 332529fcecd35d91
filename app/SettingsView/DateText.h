// A date and a time of day as people at a place write them, in short.
#pragma once

#include "core/RunLoop.h"

#include <QLocale>

namespace tarnwick {

/// The day with its month abbreviated but not as a number, and the hour and minute: "21 Nov 2026, 18:05". In
/// the system's time zone.
[[nodiscard]] QString dateText(RunLoop::WallTime when, const QLocale& locale);

} // namespace tarnwick
