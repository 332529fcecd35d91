// The window of the updater.
#pragma once

#include "app/Updater/UpdatePage.h"

#include <QDialog>

#include <functional>

class QLabel;
class QProgressBar;
class QHBoxLayout;

namespace tarnwick {

class ReleaseNotes;

/// Shows one page at a time. Closing it is an answer, too. Main thread.
class UpdateWindow final : public QDialog {
public:
    /// `icon` is shown beside the texts.
    explicit UpdateWindow(const QIcon& icon);

    /// Only what differs from before changes, so that the focus and a reader of the notes stay where they
    /// are.
    void setPage(const UpdatePage& page);

    /// An action of the page has been chosen.
    std::function<void(UpdatePage::Action)> onAction;

    /// By Escape.
    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void showProgress(const std::optional<UpdatePage::Progress>& progress);
    void showButtons(const std::vector<UpdatePage::Button>& buttons);
    void choose(UpdatePage::Action action) const;

    UpdatePage page_;

    // Children.
    QLabel* title_;
    QLabel* text_;
    ReleaseNotes* notes_;
    QProgressBar* progress_;
    QLabel* amount_;
    QHBoxLayout* buttons_;
};

} // namespace tarnwick
