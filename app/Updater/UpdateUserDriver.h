// Shows what the update engine does, and tells it what the user chooses.
#pragma once

#include "app/Observation/Observation.h"
#include "app/Update/UpdateEngine.h"
#include "app/Updater/UpdateWindow.h"
#include "app/Updater/UserDriverDelegate.h"

#include <QIcon>
#include <QPointer>

#include <functional>
#include <memory>
#include <string>

namespace tarnwick {

/// Has a window while there is something to show. Main thread.
class UpdateUserDriver {
public:
    struct Needs {
        RunLoop& loop;
        UpdateEngine& engine;
        UserDriverDelegate& delegate;
        std::function<QIcon()> icon; ///< asked when a window is made: drawing one takes memory
        std::function<void(QWidget&)>
            furnish;                   ///< gives the window what the program's windows have; may be empty
        std::function<void()> restart; ///< ends the program and starts the version that is ready
    };

    /// All of it outlives the driver.
    explicit UpdateUserDriver(Needs needs);
    UpdateUserDriver(const UpdateUserDriver&) = delete;
    UpdateUserDriver& operator=(const UpdateUserDriver&) = delete;
    ~UpdateUserDriver();

    /// Shows now what the engine does: a window that the user has just asked for needs the desktop's leave,
    /// which does not last.
    void follow();

    /// In front, with the keyboard, if it is shown.
    void bringToFront();

    /// Null while there is nothing to show.
    [[nodiscard]] UpdateWindow* window() const { return window_; }

private:
    void show(const UpdatePage& page);
    void hide();
    /// Whether the window may show itself.
    [[nodiscard]] bool announce(const UpdatePage& page);
    void act(UpdatePage::Action action);

    Needs needs_;
    QPointer<UpdateWindow> window_;
    std::string announced_; ///< the title of the page that was announced last; empty while nothing is shown
    bool isAnnouncedAsAskedFor_ = false;
    std::unique_ptr<RenderLoop> following_;
};

} // namespace tarnwick
