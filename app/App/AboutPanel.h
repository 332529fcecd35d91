// The About panel: name, version, credits, license.
#pragma once

#include <QDialog>
#include <QPointer>

#include <string>

namespace tarnwick {

class Menu;

/// One window: the first call makes it, later calls bring it to the front. Main thread.
class AboutPanel {
public:
    /// The panel takes the shortcuts of the menu, which outlives it.
    AboutPanel(std::string version, Menu& menu);
    AboutPanel(const AboutPanel&) = delete;
    AboutPanel& operator=(const AboutPanel&) = delete;
    ~AboutPanel();

    void show();

    /// The window, while it is open.
    [[nodiscard]] QDialog* window() const { return window_; }

private:
    std::string version_;
    Menu& menu_;
    QPointer<QDialog> window_;
};

} // namespace tarnwick
