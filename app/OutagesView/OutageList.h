// The list of outages.
#pragma once

#include "app/OutagesView/Model/OutagesPage.h"

#include <QListView>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// Several rows can be selected; Copy takes them all, each as a line.
class OutageList final : public QListView {
public:
    explicit OutageList(QWidget* parent);

    /// Rows that are still there stay selected, and those that are seen where they are.
    void showRows(const std::vector<OutagesRow>& rows);
    /// Makes it the only selected row and scrolls to it, without a call of `onChoose`; or selects none.
    void select(std::optional<std::size_t> row);

    /// The selected rows, from top to bottom; empty when none is.
    [[nodiscard]] std::string selectedText() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

    /// Set by the owner. Called when the user goes to another row.
    std::function<void(std::size_t row)> onChoose;
    /// Set by the owner. Called when other rows are selected.
    std::function<void()> onSelect;

protected:
    void currentChanged(const QModelIndex& present, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    void paintEvent(QPaintEvent* event) override;

private:
    class Rows;

    [[nodiscard]] QSize sizeOfRows(int count) const;
    /// If the row at which the keyboard is, is selected: Tab alone leads to a row and chooses nothing.
    void tellOfCurrent();

    Rows* rows_; ///< a child
    bool isQuiet_ = false;
};

} // namespace tarnwick
