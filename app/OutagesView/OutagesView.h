// The outages window's content.
#pragma once

#include "app/OutagesView/Model/OutagesModel.h"

#include <QWidget>

#include <array>
#include <cstddef>

class QFileDialog;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace tarnwick {

class DayFigures;
class DayStrip;
class HistoryChartView;
class OutageList;
class StatusLine;

/// The calendar, the figures of its chosen day, the list of outages. A day leads to its outage in the list,
/// an outage to its day. The model is open only while the view is shown.
class OutagesView final : public QWidget {
public:
    /// The model outlives the view.
    OutagesView(OutagesModel& model, QWidget* parent);
    ~OutagesView() override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    class Card;

    void makeButtons();
    void makeColumn();
    void applyStyle();
    void render();
    void showDay();
    void showStatus();
    void chooseDay(std::size_t day);
    void copy();
    /// Asks where to, and writes the report there.
    void exportReport();
    void write(const QString& path);

    OutagesModel& model_;

    // Children.
    DayStrip* strip_;
    QLabel* date_;
    QLabel* title_; ///< of the list
    DayFigures* figures_;
    HistoryChartView* chart_;
    OutageList* list_;
    StatusLine* status_;
    QPushButton* copy_;
    QPushButton* export_;
    std::array<Card*, 4> cards_{}; ///< from top to bottom

    QString failure_; ///< of the latest export; empty: none
    QString success_; ///< likewise
};

} // namespace tarnwick
