// Asks before an action that can't be undone.
#pragma once

#include <QMessageBox>
#include <QPointer>

#include <functional>

namespace tarnwick {

class Menu;
struct Question;

/// One question at a time. The program goes on while it is open. Main thread.
class ConfirmDialog {
public:
    /// The window takes the shortcuts of the menu, which outlives it.
    explicit ConfirmDialog(Menu& menu) : menu_(menu) {}

    ConfirmDialog(const ConfirmDialog&) = delete;
    ConfirmDialog& operator=(const ConfirmDialog&) = delete;
    /// Closes an open question without an answer.
    ~ConfirmDialog();

    /// Shows the question. Its default button cancels. `answered` is called once: with true for the other
    /// button, else with false, also when the window is closed. A question that is still open is answered
    /// with false first.
    void ask(const Question& question, std::function<void(bool)> answered);

    /// The window while a question is open.
    [[nodiscard]] QMessageBox* window() const { return window_; }

private:
    Menu& menu_;
    QPointer<QMessageBox> window_;
};

} // namespace tarnwick
