// The panel that says what the program is: name, version, credits, license.
#pragma once

#include <QDialog>
#include <QPointer>

#include <string>

namespace tarnwick {

/// One window, made at the first call and brought to the front by later ones. Main thread.
class AboutPanel {
public:
    explicit AboutPanel(std::string version);
    AboutPanel(const AboutPanel&) = delete;
    AboutPanel& operator=(const AboutPanel&) = delete;
    ~AboutPanel();

    void show();

    /// The window while it exists.
    [[nodiscard]] QDialog* window() const { return window_; }

private:
    std::string version_;
    QPointer<QDialog> window_;
};

} // namespace tarnwick
