#include "app/NoticesView/NoticesView.h"

#include "app/NoticesView/NoticeButton.h"
#include "app/NoticesView/WrappedText.h"
#include "app/ViewStyle/ViewStyle.h"
#include "platform/qt/Clipboard.h"

#include <QFontDatabase>
#include <QPainter>

namespace tarnwick {

namespace {

constexpr double cardPadding = 10;
constexpr double cardRadius = 6;
constexpr double cardGap = 8;
constexpr double buttonGap = 6;
constexpr double partGap = 5; ///< between text, command and buttons
constexpr float cardOpacity = 0.13F;

QFont commandFont(const ViewStyle& style) {
    QFont font = style.font(ViewStyle::smallText);
    font.setFamily(QFontDatabase::systemFont(QFontDatabase::FixedFont).family());
    return font;
}

} // namespace

/// The text and the command, read as one.
class NoticesView::NoticeText final : public ReadAloudWidget {
public:
    NoticeText(const Notice& notice, int width, QWidget* parent)
        : ReadAloudWidget(Role::text, parent),
          gap_(ViewStyle(*this).length(partGap)),
          text_(ViewStyle(*this).font(ViewStyle::smallText), QString::fromStdString(notice.text), width),
          command_(commandFont(ViewStyle(*this)), QString::fromStdString(notice.command.value_or("")), width),
          hasCommand_(notice.command.has_value()) {
        setSpokenText(QString::fromStdString(notice.line()));
        resize(width, text_.height() + (hasCommand_ ? gap_ + command_.height() : 0));
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setPen(ViewStyle(*this).colors().primary());
        text_.draw(painter, {0, 0});
        if (hasCommand_) {
            command_.draw(painter, QPointF(0, text_.height() + gap_));
        }
    }

private:
    int gap_;
    WrappedText text_;
    WrappedText command_;
    bool hasCommand_;
};

NoticesView::NoticesView(const Notices& notices, const NoticeActions& actions, int width, QWidget* parent)
    : ReadAloudWidget(Role::group, parent), width_(width) {
    setSpokenText(QStringLiteral("Notices"));
    const int gap = ViewStyle(*this).length(cardGap);
    int top = 0;
    for (const Notice& notice : notices) {
        top = addCard(notice, actions, top) + gap;
    }
}

NoticesView* NoticesView::inPlaceOf(
    NoticesView* before, const Notices& notices, const NoticeActions& actions, int width, QWidget* parent) {
    if (before != nullptr) {
        before->hide();
        before->deleteLater(); // one of its buttons may be what changes the notices
    }
    if (notices.empty()) {
        return nullptr;
    }
    auto* const view = new NoticesView(notices, actions, width, parent); // NOLINT: owned by its parent
    view->setFixedSize(view->sizeHint());
    view->show();
    return view;
}

QSize NoticesView::sizeHint() const {
    return {width_, cards_.back().bottom() + 1};
}

NoticesView::Offer NoticesView::offerOf(Notice::Kind kind, const NoticeActions& actions) {
    switch (kind) {
    case Notice::Kind::offersExtension:
        return {.title = QStringLiteral("Switch On"), .answer = actions.answerOffer};
    case Notice::Kind::offersApplications:
        return {.title = QStringLiteral("Add"), .answer = actions.answerApplications};
    default:
        return {};
    }
}

// NOLINTBEGIN(cppcoreguidelines-owning-memory): texts and buttons are owned by this widget
int NoticesView::addCard(const Notice& notice, const NoticeActions& actions, int top) {
    const ViewStyle style(*this);
    const int padding = style.length(cardPadding);
    auto* const text = new NoticeText(notice, width_ - 2 * padding, this);
    text->move(padding, top + padding);
    int bottom = text->geometry().bottom() + 1;
    if (notice.command) {
        const int buttonTop = bottom + style.length(partGap);
        const int left = addCopyButton(*notice.command, {width_ - padding, buttonTop});
        if (notice.kind == Notice::Kind::mayNotPing && actions.allowPinging) {
            addButton(
                QStringLiteral("Allow…"), actions.allowPinging, {left - style.length(buttonGap), buttonTop});
        }
        bottom = childrenRect().bottom() + 1;
    } else if (const auto [title, answer] = offerOf(notice.kind, actions); answer) {
        const QPoint topRight(width_ - padding, bottom + style.length(partGap));
        const int left = addButton(title, [answer] { answer(true); }, topRight);
        addButton(
            QStringLiteral("No Thanks"), [answer] { answer(false); },
            {left - style.length(buttonGap), topRight.y()});
        bottom = childrenRect().bottom() + 1;
    }
    if (notice.kind == Notice::Kind::newVersion && actions.restart) {
        addButton(
            QStringLiteral("Restart"), actions.restart, {width_ - padding, bottom + style.length(partGap)});
        bottom = childrenRect().bottom() + 1;
    }
    cards_.emplace_back(0, top, width_, bottom + padding - top);
    return cards_.back().bottom() + 1;
}

int NoticesView::addCopyButton(const std::string& command, QPoint topRight) {
    auto* const button = new NoticeButton(QStringLiteral("Copied"), this);
    const QSize size = button->sizeHint(); // room for the longer of its two texts
    button->setText(QStringLiteral("Copy"));
    button->setAccessibleDescription(QString::fromStdString(command));
    button->setGeometry(QRect(topRight - QPoint(size.width(), 0), size));
    QObject::connect(button, &QPushButton::clicked, button, [button, command] {
        Clipboard::copy(command);
        button->setText(QStringLiteral("Copied"));
    });
    return button->x();
}

int NoticesView::addButton(const QString& title, const std::function<void()>& act, QPoint topRight) {
    auto* const button = new NoticeButton(title, this);
    const QSize size = button->sizeHint();
    button->setGeometry(QRect(topRight - QPoint(size.width(), 0), size));
    QObject::connect(button, &QPushButton::clicked, button, act);
    return button->x();
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void NoticesView::paintEvent(QPaintEvent* /*event*/) {
    const ViewStyle style(*this);
    QColor ground = style.colors().warn();
    ground.setAlphaF(cardOpacity);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    const double radius = style.length(cardRadius);
    for (const QRect& card : cards_) {
        painter.drawRoundedRect(card, radius, radius);
    }
}

} // namespace tarnwick
