// The path to the host, below whose fault it is: a button, and a row for each hop while it is open.
#pragma once

#include "app/Reading/PathRows.h"
#include "app/ViewStyle/ReadAloud.h"

#include <functional>
#include <vector>

namespace tarnwick {

class NoticeButton;

class PathSection final : public ReadAloudWidget {
public:
    explicit PathSection(QWidget* parent);

    /// `width` in pixels.
    void setRows(const std::vector<PathRow>& rows, int width);

    [[nodiscard]] QSize sizeHint() const override;

    /// Set by the owner. Called when it opens or closes.
    std::function<void()> onToggle;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    class HopView;

    void toggle();
    void showRows();
    void place();

    NoticeButton* button_; ///< a child
    std::vector<PathRow> rows_;
    std::vector<HopView*> views_; ///< children, while it is open
    bool isOpen_ = false;
    int width_ = 0;
};

} // namespace tarnwick
