#include "app/Updater/UpdateWindow.h"

#include "app/Updater/ReleaseNotes.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnwick {

namespace {

// Sizes of the design, in points.
constexpr double updateIconSide = 56;
constexpr double updateMargin = 20;
constexpr double updateWidth = 460;
constexpr double notesHeight = 180;

/// Of a progress bar: a thousandth can be seen.
constexpr int progressSteps = 1000;

QLabel* readableLabel(QWidget* parent) {
    auto* const label = new QLabel(parent); // NOLINT(cppcoreguidelines-owning-memory): a child
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

QString amountText(const UpdatePage::Progress& progress, const QLocale& locale) {
    const auto text = [&locale](std::uint64_t bytes) {
        return locale.formattedDataSize(static_cast<qint64>(bytes), 1, QLocale::DataSizeSIFormat);
    };
    return text(progress.done) + " of " + text(progress.whole);
}

} // namespace

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this window
UpdateWindow::UpdateWindow(const QIcon& icon)
    : title_(readableLabel(this)),
      text_(readableLabel(this)),
      notes_(new ReleaseNotes(this)),
      progress_(new QProgressBar(this)),
      amount_(readableLabel(this)),
      buttons_(new QHBoxLayout) {
    setWindowTitle(QStringLiteral("Software Update"));
    setWindowIcon(icon);
    const ViewStyle style(*this);
    title_->setFont(style.font(ViewStyle::headingText, QFont::DemiBold));
    progress_->setTextVisible(false);
    notes_->setMinimumHeight(style.length(notesHeight));
    auto* const picture = new QLabel(this);
    const int side = style.length(updateIconSide);
    picture->setPixmap(icon.pixmap(QSize(side, side), devicePixelRatioF()));
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(style.length(8));
    for (QWidget* const part : std::initializer_list<QWidget*>{title_, text_, notes_, progress_, amount_}) {
        texts->addWidget(part);
    }
    texts->addStretch();
    texts->addSpacing(style.length(8));
    texts->addLayout(buttons_);
    auto* const whole = new QHBoxLayout(this);
    const int margin = style.length(updateMargin);
    whole->setContentsMargins(margin, margin, margin, margin);
    whole->setSpacing(style.length(16));
    whole->addWidget(picture, 0, Qt::AlignTop);
    whole->addLayout(texts, 1);
    setMinimumWidth(style.length(updateWidth));
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void UpdateWindow::setPage(const UpdatePage& page) {
    title_->setText(QString::fromStdString(page.title));
    text_->setText(QString::fromStdString(page.text));
    text_->setVisible(!page.text.empty());
    if (page.notes != page_.notes) {
        notes_->show(QString::fromStdString(page.notes));
    }
    notes_->setVisible(!page.notes.empty());
    showProgress(page.progress);
    if (page.buttons != page_.buttons) {
        showButtons(page.buttons);
    }
    setAccessibleDescription(title_->text() + (page.text.empty() ? "" : ". ") + text_->text());
    const bool isOtherPage = page.title != page_.title;
    page_ = page;
    if (isOtherPage) {
        adjustSize();
    }
}

void UpdateWindow::showProgress(const std::optional<UpdatePage::Progress>& progress) {
    progress_->setVisible(progress.has_value());
    const bool isKnown = progress && progress->whole > 0;
    amount_->setVisible(isKnown);
    if (isKnown) {
        const double part = static_cast<double>(progress->done) / static_cast<double>(progress->whole);
        progress_->setRange(0, progressSteps);
        progress_->setValue(static_cast<int>(part * progressSteps));
        amount_->setText(amountText(*progress, locale()));
    } else {
        progress_->setRange(0, 0);
    }
    progress_->setAccessibleName(title_->text());
}

void UpdateWindow::showButtons(const std::vector<UpdatePage::Button>& buttons) {
    while (QLayoutItem* const item = buttons_->takeAt(0)) {
        if (QWidget* const button = item->widget()) {
            button->hide();
            button->deleteLater(); // it may be the one that was clicked
        }
        delete item; // NOLINT(cppcoreguidelines-owning-memory): the layout has given it away
    }
    buttons_->addStretch();
    QWidget* before = notes_;
    for (const UpdatePage::Button& button : buttons) {
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): a child
        auto* const widget = new QPushButton(QString::fromStdString(button.label), this);
        connect(widget, &QPushButton::clicked, this, [this, action = button.action] { choose(action); });
        widget->setAutoDefault(false);
        buttons_->addWidget(widget);
        setTabOrder(before, widget);
        before = widget;
        widget->show(); // in a window that is shown already, only later otherwise
        if (&button == &buttons.back()) {
            widget->setDefault(true);
            widget->setFocus();
        }
    }
}

void UpdateWindow::choose(UpdatePage::Action action) const {
    if (onAction) {
        onAction(action);
    }
}

void UpdateWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    choose(page_.whenClosed);
}

void UpdateWindow::reject() {
    choose(page_.whenClosed);
}

} // namespace tarnwick
