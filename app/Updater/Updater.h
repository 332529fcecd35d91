// Software updates of the desktop program.
#pragma once

#include "app/Update/SoftwareUpdates.h"
#include "app/Update/UpdateEngine.h"
#include "app/Updater/UpdateUserDriver.h"

#include <QIcon>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// Wraps the engine and its window, and brings that window to the front: the program has no window of its own
/// and is seldom the active one, so it would open behind others. Main thread.
class Updater final : public SoftwareUpdates, public UserDriverDelegate {
public:
    struct Needs {
        RunLoop& loop;
        Preferences& preferences;
        /// Makes the engine; null where the program does not run from a bundle, or where the bundle names no
        /// source of updates. Such a program has no updater. May be empty, which means the same.
        std::function<std::unique_ptr<UpdateEngine>()> makeEngine;
        std::function<QIcon()> icon;           ///< asked when a window is made: drawing one takes memory
        std::function<void(QWidget&)> furnish; ///< see `UpdateUserDriver`
        std::function<void()> restart;
    };

    /// What exists where there is an updater.
    struct Controller {
        std::unique_ptr<UpdateEngine> engine;
        std::unique_ptr<UpdateUserDriver> driver; ///< null before `start`
    };

    explicit Updater(Needs needs);
    ~Updater() override;

    /// Begins with the scheduled checks, and shows what there is to tell of the run before. Called once, when
    /// what the needs refer to can be used.
    void start();

    /// Null where there is no updater.
    [[nodiscard]] const Controller* controller() const { return controller_ ? &*controller_ : nullptr; }

    // Without a controller these tell and do nothing.

    [[nodiscard]] bool automaticallyChecksForUpdates() const override;
    void setAutomaticallyChecksForUpdates(bool checks) override;
    [[nodiscard]] bool automaticallyDownloadsUpdates() const override;
    void setAutomaticallyDownloadsUpdates(bool downloads) override;
    [[nodiscard]] std::optional<RunLoop::WallTime> lastUpdateCheckDate() const override;
    [[nodiscard]] std::string lastProblem() const override;
    [[nodiscard]] bool canCheckForUpdates() const override;
    void checkForUpdates() override;
    [[nodiscard]] std::string serverDomain() const override;

    /// The update window, `delay` seconds from now: it may appear only a moment later. At once for 0.
    void bringUpdaterToFront(double delay);

    /// Seconds after which the window is brought to the front once more.
    static constexpr double momentLater = 0.2;

private:
    [[nodiscard]] bool supportsGentleScheduledUpdateReminders() const override;
    [[nodiscard]] bool standardUserDriverShouldHandleShowingScheduledUpdate(
        const FoundUpdate& update, bool inImmediateFocus) override;
    void standardUserDriverWillHandleShowingUpdate(
        bool handleShowingUpdate, const FoundUpdate& update, bool isUserInitiated) override;
    void standardUserDriverWillShowModalAlert() override;

    Needs needs_;
    std::optional<Controller> controller_;
    std::vector<RunLoop::Handle> fronting_; ///< the last few
    Lifeline lifeline_;
};

} // namespace tarnwick
