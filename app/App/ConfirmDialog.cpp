#include "app/App/ConfirmDialog.h"

#include "app/App/MainMenu.h"
#include "app/App/ProgramIcon.h"
#include "app/StatusItemController/StatusItemController.h"
#include "platform/qt/Foreground.h"

#include <QMessageBox>
#include <QPushButton>

#include <utility>

namespace tarnwick {

namespace {

constexpr int questionIconSide = 48;

} // namespace

ConfirmDialog::~ConfirmDialog() {
    if (window_ != nullptr) {
        window_->disconnect();
        delete window_;
    }
}

void ConfirmDialog::ask(const Question& question, std::function<void(bool)> answered) {
    if (window_ != nullptr) {
        window_->reject();
    }
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): deletes itself when closed
    window_ = new QMessageBox;
    window_->setAttribute(Qt::WA_DeleteOnClose);
    window_->setWindowTitle(QString::fromStdString(question.title));
    window_->setWindowIcon(programIcon());
    window_->setIconPixmap(
        programIcon().pixmap(QSize(questionIconSide, questionIconSide), window_->devicePixelRatioF()));
    window_->setTextFormat(Qt::PlainText);
    window_->setText(QString::fromStdString(question.text));
    window_->setInformativeText(QString::fromStdString(question.note));
    window_->setModal(false);
    const auto* const accept =
        window_->addButton(QString::fromStdString(question.confirm), QMessageBox::DestructiveRole);
    QPushButton* const cancel = window_->addButton(QMessageBox::Cancel);
    cancel->setText(QString::fromStdString(question.cancel));
    cancel->setIcon({});
    window_->setDefaultButton(cancel);
    window_->setEscapeButton(cancel);
    QObject::connect(
        window_, &QDialog::finished, window_, [this, accept, answer = std::move(answered)](int /*result*/) {
            const bool isAccepted = window_->clickedButton() == accept;
            window_ = nullptr; // deletes itself
            answer(isAccepted);
        });
    MainMenu::install(*window_, menu_);
    Foreground::show(*window_);
}

} // namespace tarnwick
