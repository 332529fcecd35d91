// What the pictures show: faces, the drop-down and the settings window, in the application's colors and font.
#pragma once

#include "app/Reading/PastCharts.h"
#include "app/Update/SoftwareUpdates.h"
#include "app/Update/UpdateState.h"
#include "platform/ports/FacePainter.h"
#include "platform/ports/StatusItem.h"
#include "tests/app/WatchedMonitor.h"
#include "tests/simulation/FakeLoginItem.h"

#include <QImage>
#include <QString>

#include <optional>
#include <string>

namespace tarnwick::scenes {

/// An empty title or figure is none.
[[nodiscard]] StatusFace face(
    StatusFace::Icon icon, int bars, const std::string& title, const std::string& figure);

/// The height is in pixels.
[[nodiscard]] QImage painted(const StatusFace& face, StatusItem::Form form, int height, Ink ink);

/// A long quiet day, and at its end five minutes with slow pings and a short outage in them.
void watchBusily(WatchedMonitor& world);

/// Slow for a while, asleep, then a loss each minute and an outage; the same for each span.
[[nodiscard]] PastSource somePast();

/// Which chart the drop-down shows, and where in it the pointer is: from 0 at the left to 1.
struct PastView {
    HistoryChart::Reach reach = HistoryChart::Reach::fiveMinutes;
    std::optional<double> pointsAt{};
};

/// The drop-down with its shadow on transparent ground, after some steps of the highlight.
[[nodiscard]] QImage grabDropDown(
    WatchedMonitor& world, bool offersChangeHost, int steps, const QString& name, const PastView& past = {});

/// Like `watchBusily`; then nothing answers until the connection is down.
void loseProvider(WatchedMonitor& world);

/// The drop-down of a connection that is down, which blames the provider, with the path open.
[[nodiscard]] QImage grabVerdict(WatchedMonitor& world);

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

/// What the outages window is about.
struct OutagesScene {
    enum class Past { usual, unknown, good, oneOutage, hundreds };

    Past past = Past::usual;
    std::string host = "one.example";
    int daysAgo = 3;         ///< of the chosen day; the usual past had two outages then
    bool isRunning = false;  ///< an outage lasts
    bool seesChange = false; ///< the clock is set back 29 days ago, as in Central Europe
};

/// The outages window at its usual size.
[[nodiscard]] QImage grabOutages(const OutagesScene& scene = {});

} // namespace tarnwick::scenes
