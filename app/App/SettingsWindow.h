// The window "Tarnwick Settings".
#pragma once

#include "app/SettingsView/Model/SettingsModel.h"

#include <QMainWindow>

class QScrollArea;

namespace tarnwick {

class Menu;
class SettingsView;

/// As large as its form, or as the screen that it is on lets it be: then the form scrolls. Closing hides it.
/// Main thread.
class SettingsWindow final : public QMainWindow {
public:
    /// All of it outlives the window. Its shortcuts are those of the menu.
    SettingsWindow(SettingsModel& model, RunLoop& loop, const Menu& menu);
    SettingsWindow(const SettingsWindow&) = delete;
    SettingsWindow& operator=(const SettingsWindow&) = delete;
    /// What is typed but not committed goes with it.
    ~SettingsWindow() override;

    /// Brings it to the front with the keyboard; in the middle of the screen the first time.
    void present();

    [[nodiscard]] SettingsView& view() const { return *view_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void center();
    void followScreen();
    void fit();

    SettingsView* view_;                   ///< owned by the scroll area
    QScrollArea* area_;                    ///< a child
    QMetaObject::Connection screenChange_; ///< of the screen that it is on
    bool isPlaced_ = false;
};

} // namespace tarnwick
