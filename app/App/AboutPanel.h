// The panel that says what the program is: name, version, credits, license.
#pragma once

#include <QDialog>
#include <QPointer>

#include <string>

namespace tarnwick {

class Menu;

/// One window, made at the first call and brought to the front by later ones. Main thread.
class AboutPanel {
public:
    /// The menu, whose shortcuts the panel takes, outlives it.
    AboutPanel(std::string version, const Menu& menu);
    AboutPanel(const AboutPanel&) = delete;
    AboutPanel& operator=(const AboutPanel&) = delete;
    ~AboutPanel();

    void show();

    /// The window while it exists.
    [[nodiscard]] QDialog* window() const { return window_; }

private:
    std::string version_;
    const Menu& menu_;
    QPointer<QDialog> window_;
};

} // namespace tarnwick
