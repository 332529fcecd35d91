// The calendar of the outages window: a column for each day.
#pragma once

#include "app/OutagesView/Model/OutagesPage.h"
#include "app/ViewStyle/ReadAloud.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace tarnwick {

/// The worse a day was, the higher is its column. One day is chosen. To assistive technology the days are
/// radio buttons; Tab leads to the chosen one, arrows, Page Up, Page Down, Home and End to others.
class DayStrip final : public ReadAloudWidget {
public:
    explicit DayStrip(QWidget* parent);

    /// As many as `OutagesPage::dayCount`.
    void showDays(const std::vector<OutagesDay>& days, std::size_t chosen);

    /// Gives the chosen day the keyboard.
    void focusChosen();

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

    /// Set by the owner. Called when the user chooses another day.
    std::function<void(std::size_t day)> onChoose;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    class DayButton;

    void place();
    /// Without telling.
    void check(std::size_t day);
    void choose(std::size_t day);
    /// As a key has asked; stops at both ends.
    void moveTo(std::ptrdiff_t day);
    [[nodiscard]] int columnHeight() const;
    void drawMarker(QPainter& painter) const;
    void drawMonths(QPainter& painter) const;

    std::vector<OutagesDay> days_;
    std::vector<DayButton*> buttons_; ///< children
    std::size_t chosen_ = 0;
};

} // namespace tarnwick
