#include "app/OutagesView/OutageList.h"

#include "app/OutagesView/OutageRowPainter.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QAbstractListModel>
#include <QItemSelectionModel>
#include <QPainter>
#include <QScopedValueRollback>

#include <algorithm>
#include <ranges>
#include <set>

namespace tarnwick {

namespace {

constexpr int usualRows = 5;
constexpr int fewestRows = 3;

const char* const noOutages = "No outage is known in these 90 days.";

/// What makes two rows the same one.
std::pair<HistoryTime, Episode::Kind> identityOf(const OutagesRow& row) {
    return {row.span.from, row.kind};
}

bool areSame(const std::vector<OutagesRow>& some, const std::vector<OutagesRow>& others) {
    return std::ranges::equal(some, others, {}, identityOf, identityOf);
}

} // namespace

class OutageList::Rows final : public QAbstractListModel {
public:
    explicit Rows(QObject* parent) : QAbstractListModel(parent) {}

    [[nodiscard]] const std::vector<OutagesRow>& all() const { return rows_; }

    /// Of the same rows, of which the last ones may have grown.
    void refresh(const std::vector<OutagesRow>& rows) {
        rows_ = rows;
        if (!rows_.empty()) {
            Q_EMIT dataChanged(index(0), index(static_cast<int>(rows_.size()) - 1));
        }
    }

    void replace(const std::vector<OutagesRow>& rows) {
        beginResetModel();
        rows_ = rows;
        endResetModel();
    }

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(rows_.size());
    }

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        const OutagesRow& row = rows_.at(static_cast<std::size_t>(index.row()));
        switch (role) {
        case Qt::DisplayRole:
        case Qt::ToolTipRole:
            return QString::fromStdString(row.text());
        case OutageRowPainter::isOutage:
            return row.kind == Episode::Kind::outage;
        case OutageRowPainter::when:
            return QString::fromStdString(row.when);
        case OutageRowPainter::howLong:
            return QString::fromStdString(row.length);
        case OutageRowPainter::blame:
            return QString::fromStdString(row.blame);
        case OutageRowPainter::evidence:
            return QString::fromStdString(row.evidence);
        default:
            return {};
        }
    }

private:
    std::vector<OutagesRow> rows_;
};

// NOLINTBEGIN(cppcoreguidelines-owning-memory): owned by this widget
OutageList::OutageList(QWidget* parent) : QListView(parent), rows_(new Rows(this)) {
    setModel(rows_);
    setItemDelegate(new OutageRowPainter(this));
    setUniformItemSizes(true);
    setSelectionMode(ExtendedSelection);
    setFrameShape(NoFrame);
    setVerticalScrollMode(ScrollPerPixel);
    setAccessibleName(QStringLiteral("Outages"));
    viewport()->setAutoFillBackground(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void OutageList::showRows(const std::vector<OutagesRow>& rows) {
    const QScopedValueRollback quiet(isQuiet_, true);
    setAccessibleDescription(rows.empty() ? QLatin1String(noOutages) : QLatin1String());
    if (areSame(rows, rows_->all())) {
        rows_->refresh(rows);
        return;
    }
    std::set<std::pair<HistoryTime, Episode::Kind>> selected;
    for (const QModelIndex& index : selectionModel()->selectedIndexes()) {
        selected.insert(identityOf(rows_->all().at(static_cast<std::size_t>(index.row()))));
    }
    rows_->replace(rows);
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (selected.contains(identityOf(rows[row]))) {
            const QModelIndex index = rows_->index(static_cast<int>(row));
            selectionModel()->setCurrentIndex(index, QItemSelectionModel::Select);
        }
    }
}

void OutageList::select(std::optional<std::size_t> row) {
    const QScopedValueRollback quiet(isQuiet_, true);
    if (!row) {
        selectionModel()->clear();
        return;
    }
    const QModelIndex index = rows_->index(static_cast<int>(*row));
    setCurrentIndex(index);
    scrollTo(index);
}

std::string OutageList::selectedText() const {
    std::vector<int> selected;
    for (const QModelIndex& index : selectionModel()->selectedIndexes()) {
        selected.push_back(index.row());
    }
    std::ranges::sort(selected);
    std::string text;
    for (const int row : selected) {
        text += rows_->all().at(static_cast<std::size_t>(row)).text() + "\n";
    }
    if (!text.empty()) {
        text.pop_back();
    }
    return text;
}

QSize OutageList::sizeOfRows(int count) const {
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    return {0, count * itemDelegate()->sizeHint(option, {}).height()};
}

QSize OutageList::sizeHint() const {
    return sizeOfRows(usualRows);
}

QSize OutageList::minimumSizeHint() const {
    return sizeOfRows(fewestRows);
}

void OutageList::currentChanged(const QModelIndex& present, const QModelIndex& previous) {
    QListView::currentChanged(present, previous);
    tellOfCurrent();
}

void OutageList::tellOfCurrent() {
    const QModelIndex present = currentIndex();
    if (!isQuiet_ && onChoose && present.isValid() && selectionModel()->isSelected(present)) {
        onChoose(static_cast<std::size_t>(present.row()));
    }
}

void OutageList::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    QListView::selectionChanged(selected, deselected);
    tellOfCurrent();
    if (onSelect) {
        onSelect();
    }
}

void OutageList::paintEvent(QPaintEvent* event) {
    QListView::paintEvent(event);
    if (rows_->all().empty()) {
        QPainter painter(viewport());
        painter.setPen(ViewStyle(*this).colors().secondary());
        painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, QLatin1String(noOutages));
    }
}

} // namespace tarnwick
