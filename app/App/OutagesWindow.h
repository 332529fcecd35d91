// The window "Tarnwick Outages".
#pragma once

#include "app/OutagesView/Model/OutagesModel.h"

#include <QMainWindow>

class QScrollArea;

namespace tarnwick {

class Menu;
class OutagesView;

/// Can be resized; where it is too small for its content, that scrolls. Closing hides it. Main thread.
class OutagesWindow final : public QMainWindow {
public:
    /// The menu outlives the window, which takes its shortcuts.
    OutagesWindow(OutagesModel::Needs needs, Menu& menu);
    OutagesWindow(const OutagesWindow&) = delete;
    OutagesWindow& operator=(const OutagesWindow&) = delete;
    ~OutagesWindow() override;

    /// Brings it to the front with keyboard focus; in the middle of the screen the first time.
    void present();

    [[nodiscard]] OutagesView& view() const { return *view_; }

    [[nodiscard]] OutagesModel& model() { return model_; }

private:
    void center();

    OutagesModel model_;
    OutagesView* view_; ///< owned by the scroll area
    QScrollArea* area_; ///< a child
    bool isPlaced_ = false;
};

} // namespace tarnwick
