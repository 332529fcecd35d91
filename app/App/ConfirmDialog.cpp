#include "app/App/ConfirmDialog.h"

#include <QMessageBox>
#include <QPushButton>

#include <utility>

namespace tarnwick {

ConfirmDialog::~ConfirmDialog() {
    if (window_ != nullptr) {
        window_->disconnect();
        delete window_;
    }
}

void ConfirmDialog::ask(
    const std::string& question, const std::string& action, std::function<void(bool)> answered) {
    if (window_ != nullptr) {
        window_->reject();
    }
    // NOLINTBEGIN(cppcoreguidelines-owning-memory): deletes itself when closed
    window_ =
        new QMessageBox(QMessageBox::Question, QStringLiteral("Tarnwick"), QString::fromStdString(question));
    // NOLINTEND(cppcoreguidelines-owning-memory)
    window_->setAttribute(Qt::WA_DeleteOnClose);
    window_->setAttribute(Qt::WA_QuitOnClose, false);
    window_->setTextFormat(Qt::PlainText);
    window_->setModal(false);
    const auto* const accept =
        window_->addButton(QString::fromStdString(action), QMessageBox::DestructiveRole);
    QPushButton* const cancel = window_->addButton(QMessageBox::Cancel);
    window_->setDefaultButton(cancel);
    window_->setEscapeButton(cancel);
    QObject::connect(
        window_, &QDialog::finished, window_, [this, accept, answer = std::move(answered)](int /*result*/) {
            const bool isAccepted = window_->clickedButton() == accept;
            window_ = nullptr; // deletes itself
            answer(isAccepted);
        });
    window_->show();
    window_->raise();
    window_->activateWindow();
}

} // namespace tarnwick
