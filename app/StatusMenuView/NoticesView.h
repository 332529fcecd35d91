// What the user should know or do, in the menu view: each notice on a card, with a button that copies its
// command.
#pragma once

#include "app/Reading/Notice.h"
#include "app/StatusMenuView/ReadAloud.h"

#include <vector>

namespace tarnwick {

class NoticesView final : public ReadAloudWidget {
public:
    /// Made for these notices, at least one, and for this width.
    NoticesView(const Notices& notices, int width, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    class NoticeText;

    /// Returns the bottom of the card.
    int addCard(const Notice& notice, int top);
    void addCopyButton(const std::string& command, QPoint topRight);

    int width_;
    std::vector<QRect> cards_;
};

} // namespace tarnwick
