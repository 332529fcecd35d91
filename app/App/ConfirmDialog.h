// Asks before something that can't be undone.
#pragma once

#include <QMessageBox>
#include <QPointer>

#include <functional>
#include <string>

namespace tarnwick {

/// One question at a time, beside a program that goes on. Main thread.
class ConfirmDialog {
public:
    ConfirmDialog() = default;
    ConfirmDialog(const ConfirmDialog&) = delete;
    ConfirmDialog& operator=(const ConfirmDialog&) = delete;
    /// An open question is dropped without an answer.
    ~ConfirmDialog();

    /// Shows the question with two buttons, one of which is named `action` ("Reset"); the other, "Cancel", is
    /// the default one. `answered` is called once: true for the action, false for everything else, a closed
    /// window included. A question that is still open is answered with false first.
    void ask(const std::string& question, const std::string& action, std::function<void(bool)> answered);

    /// The window while a question is open.
    [[nodiscard]] QMessageBox* window() const { return window_; }

private:
    QPointer<QMessageBox> window_;
};

} // namespace tarnwick
