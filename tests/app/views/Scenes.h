// What the pictures show: faces, the drop-down and the settings window, in the application's colors and font.
#pragma once

#include "app/Update/SoftwareUpdates.h"
#include "app/Update/UpdateState.h"
#include "platform/ports/FacePainter.h"
#include "platform/ports/StatusItem.h"
#include "tests/app/WatchedMonitor.h"
#include "tests/simulation/FakeLoginItem.h"

#include <QImage>
#include <QString>

#include <string>

namespace tarnwick::scenes {

/// An empty title or figure is none.
[[nodiscard]] StatusFace face(
    StatusFace::Icon icon, int bars, const std::string& title, const std::string& figure);

/// The height is in pixels.
[[nodiscard]] QImage painted(const StatusFace& face, StatusItem::Form form, int height, Ink ink);

/// A long quiet day, and at its end five minutes with slow pings and a short outage in them.
void watchBusily(WatchedMonitor& world);

/// The drop-down with its shadow on transparent ground, after some steps of the highlight.
[[nodiscard]] QImage grabDropDown(
    WatchedMonitor& world, bool offersChangeHost, int steps, const QString& name);

/// The update window in one of its states.
[[nodiscard]] QImage grabUpdate(const UpdateState& state);

/// A newer version with its notes.
[[nodiscard]] FoundUpdate someUpdate();

/// The settings window after a click on a switch or button, if any, and the menu that it has opened. Updates
/// may be null.
[[nodiscard]] QImage grabSettings(
    WatchedMonitor& world, simulation::FakeLoginItem& loginItem, const QString& clicked = {},
    SoftwareUpdates* updates = nullptr);

void changeSomeSettings(WatchedMonitor& world);

} // namespace tarnwick::scenes
