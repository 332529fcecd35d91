// The figures of the chosen day, in three columns.
#pragma once

#include "app/OutagesView/Model/OutagesPage.h"
#include "app/ViewStyle/ReadAloud.h"

#include <vector>

namespace tarnwick {

class DayFigures final : public ReadAloudWidget {
public:
    explicit DayFigures(QWidget* parent);

    void showFigures(const std::vector<OutagesFigure>& figures);

private:
    class FigureView;

    std::vector<FigureView*> views_; ///< children, `dayFigureCount` of them
};

} // namespace tarnwick
