// The About panel: name, version, credits, what is sent and kept, license.
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
    /// `historyFile`: where the history lies, for people.
    AboutPanel(std::string version, std::string historyFile, Menu& menu);
    AboutPanel(const AboutPanel&) = delete;
    AboutPanel& operator=(const AboutPanel&) = delete;
    ~AboutPanel();

    void show();

    /// The window, while it is open.
    [[nodiscard]] QDialog* window() const { return window_; }

private:
    std::string version_;
    std::string historyFile_;
    Menu& menu_;
    QPointer<QDialog> window_;
};

} // namespace tarnwick
