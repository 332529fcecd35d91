// The figures of the chosen day, in three columns.
#pragma once

#include "app/OutagesView/Model/OutagesPage.h"
#include "app/ViewStyle/ReadAloud.h"

#include <vector>

class QGridLayout;

namespace tarnwick {

class DayFigures final : public ReadAloudWidget {
public:
    explicit DayFigures(QWidget* parent);

    void showFigures(const std::vector<OutagesFigure>& figures);

protected:
    void changeEvent(QEvent* event) override;

private:
    class FigureView;

    void applyStyle();

    // Children.
    QGridLayout* grid_;
    std::vector<FigureView*> views_; ///< `dayFigureCount` of them
};

} // namespace tarnwick
