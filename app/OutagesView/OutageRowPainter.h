// How the list of outages draws one of them.
#pragma once

#include <QStyledItemDelegate>

namespace tarnwick {

/// In two lines: when, how long and whose fault it was; then the evidence.
class OutageRowPainter final : public QStyledItemDelegate {
public:
    /// Under these roles of the model it finds the parts of a row. The texts are strings.
    enum Part { isOutage = Qt::UserRole, when, howLong, blame, evidence };

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(
        QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace tarnwick
