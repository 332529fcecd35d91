// The window "Tarnwick Settings".
#pragma once

#include "app/SettingsView/Model/SettingsModel.h"

#include <QMainWindow>

class QScrollArea;

namespace tarnwick {

class Menu;
class SettingsView;

/// As large as its form; on a small screen the form scrolls. Closing hides it.
/// Main thread.
class SettingsWindow final : public QMainWindow {
public:
    /// All arguments outlive the window, which takes the menu's shortcuts.
    SettingsWindow(SettingsModel& model, RunLoop& loop, Menu& menu);
    SettingsWindow(const SettingsWindow&) = delete;
    SettingsWindow& operator=(const SettingsWindow&) = delete;
    /// Drops what is typed but not committed.
    ~SettingsWindow() override;

    /// Brings it to the front with keyboard focus; in the middle of the screen the first time.
    void present();

    [[nodiscard]] SettingsView& view() const { return *view_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void center();
    void followScreen();
    void fit();
    /// Moves it up where it has grown beyond the screen's lower end.
    void keepOnScreen();

    SettingsView* view_;                   ///< owned by the scroll area
    QScrollArea* area_;                    ///< a child
    QMetaObject::Connection screenChange_; ///< of its present screen
    bool isPlaced_ = false;
};

} // namespace tarnwick
