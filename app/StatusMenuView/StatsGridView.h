// The statistics of the menu view: the session beside all time.
#pragma once

#include "app/Reading/StatsGrid.h"
#include "app/ViewStyle/ReadAloud.h"

#include <array>

namespace tarnwick {

class StatsGridView final : public ReadAloudWidget {
public:
    explicit StatsGridView(QWidget* parent);

    /// Draws again only the rows that differ.
    void setRows(const std::array<StatsGrid::Row, StatsGrid::rowCount>& rows);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    class RowView;

    [[nodiscard]] double allTimeWidth() const;
    void placeRows();

    std::array<RowView*, StatsGrid::rowCount> rows_{}; ///< children
};

} // namespace tarnwick
