// A date and a time of day in the user's notation, short.
#pragma once

#include "core/RunLoop.h"

#include <QLocale>

namespace tarnwick {

/// The day with an abbreviated month name, the hour and the minute: "21 Nov 2026, 18:05". In the system's
/// time zone.
[[nodiscard]] QString dateText(RunLoop::WallTime when, const QLocale& locale);

} // namespace tarnwick
