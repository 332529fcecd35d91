// Asks before something that can't be undone.
#pragma once

#include <QMessageBox>
#include <QPointer>

#include <functional>

namespace tarnwick {

class Menu;
struct Question;

/// One question at a time, beside a program that goes on. Main thread.
class ConfirmDialog {
public:
    /// The menu, whose shortcuts the question takes, outlives it.
    explicit ConfirmDialog(const Menu& menu) : menu_(menu) {}

    ConfirmDialog(const ConfirmDialog&) = delete;
    ConfirmDialog& operator=(const ConfirmDialog&) = delete;
    /// An open question is dropped without an answer.
    ~ConfirmDialog();

    /// Shows the question with a button that says yes and the default one, which cancels. `answered` is
    /// called once: true for yes, false for everything else, a closed window included. A question that is
    /// still open is answered with false first.
    void ask(const Question& question, std::function<void(bool)> answered);

    /// The window while a question is open.
    [[nodiscard]] QMessageBox* window() const { return window_; }

private:
    const Menu& menu_;
    QPointer<QMessageBox> window_;
};

} // namespace tarnwick
