// What the user should know or do: each notice on a card, with buttons for what helps.
#pragma once

#include "app/Reading/Notice.h"
#include "app/ViewStyle/ReadAloud.h"

#include <functional>
#include <string>
#include <vector>

namespace tarnwick {

struct NoticeActions {
    /// Asks an administrator to let this user ping; null where nothing can ask.
    std::function<void()> allowPinging = nullptr;
    /// Answers the offer of an extension; null where nothing takes the answer.
    std::function<void(bool switchOn)> answerOffer = nullptr;
    /// Likewise of the place among the applications.
    std::function<void(bool addsIt)> answerApplications = nullptr;
    /// Starts the program's file anew in place of this process; null where nothing can.
    std::function<void()> restart = nullptr;
};

class NoticesView final : public ReadAloudWidget {
public:
    /// Made for these notices, at least one, and for this width.
    NoticesView(const Notices& notices, const NoticeActions& actions, int width, QWidget* parent);

    /// Takes `before`, if any, away and shows these notices. Returns the new view, a child of `parent`; null
    /// without notices.
    [[nodiscard]] static NoticesView* inPlaceOf(
        NoticesView* before, const Notices& notices, const NoticeActions& actions, int width,
        QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    class NoticeText;

    struct Offer {
        QString title; ///< of the button that takes it
        std::function<void(bool takesIt)> answer;
    };

    [[nodiscard]] static Offer offerOf(Notice::Kind kind, const NoticeActions& actions);

    /// Returns the bottom of the card.
    int addCard(const Notice& notice, const NoticeActions& actions, int top);
    /// Returns the left edge of the button.
    int addCopyButton(const std::string& command, QPoint topRight);
    /// Likewise.
    int addButton(const QString& title, const std::function<void()>& act, QPoint topRight);

    int width_;
    std::vector<QRect> cards_;
};

} // namespace tarnwick
