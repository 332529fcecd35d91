#include "app/OutagesView/OutageList.h"

#include "app/OutagesView/OutageRowPainter.h"
#include "app/ViewStyle/FormStyle.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QAbstractListModel>
#include <QItemSelectionModel>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <iterator>
#include <ranges>
#include <set>
#include <utility>

namespace tarnwick {

namespace {

constexpr int usualRows = 5;
constexpr int fewestRows = 3;

const char* const noOutages = "No outage is known in these 90 days.";

/// What makes two rows the same one.
using RowIdentity = std::pair<HistoryTime, Episode::Kind>;

RowIdentity identityOf(const OutagesRow& row) {
    return {row.span.from, row.kind};
}

std::set<RowIdentity> identitiesOf(const std::vector<OutagesRow>& rows) {
    std::set<RowIdentity> identities;
    std::ranges::transform(rows, std::inserter(identities, identities.end()), identityOf);
    return identities;
}

} // namespace

class OutageList::Rows final : public QAbstractListModel {
public:
    explicit Rows(QObject* parent) : QAbstractListModel(parent) {}

    [[nodiscard]] const std::vector<OutagesRow>& all() const { return rows_; }

    /// To the view, rows that are still there stay the same ones.
    void update(const std::vector<OutagesRow>& rows) {
        removeAllBut(rows);
        insertMissing(rows);
        const std::vector<OutagesRow> before = std::exchange(rows_, rows);
        for (std::size_t row = 0; row < rows.size(); ++row) {
            if (rows[row] != before[row]) {
                const QModelIndex changed = index(static_cast<int>(row));
                Q_EMIT dataChanged(changed, changed);
            }
        }
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
    void removeAllBut(const std::vector<OutagesRow>& wanted) {
        const auto all = identitiesOf(wanted);
        const auto stays = [&all](const OutagesRow& row) { return all.contains(identityOf(row)); };
        for (auto end = rows_.end(); end != rows_.begin();) {
            if (stays(*std::prev(end))) {
                --end;
                continue;
            }
            auto first = std::prev(end);
            while (first != rows_.begin() && !stays(*std::prev(first))) {
                --first;
            }
            end = remove(first, end);
        }
    }

    /// Makes the rows those of `wanted`, of which all that are here are a part.
    void insertMissing(const std::vector<OutagesRow>& wanted) {
        for (std::size_t row = 0; row < wanted.size(); ++row) {
            const auto here = rows_.begin() + static_cast<std::ptrdiff_t>(row);
            const auto missing = wanted.begin() + static_cast<std::ptrdiff_t>(row);
            // All up to the next one that is here.
            const auto next = here != rows_.end()
                                  ? std::ranges::find(missing, wanted.end(), identityOf(*here), identityOf)
                                  : wanted.end();
            if (next != missing) {
                const auto count = static_cast<int>(next - missing);
                beginInsertRows({}, static_cast<int>(row), static_cast<int>(row) + count - 1);
                rows_.insert(here, missing, next);
                endInsertRows();
            }
        }
        // Two that began at the same time may have changed places: one of them is there twice.
        remove(rows_.begin() + static_cast<std::ptrdiff_t>(wanted.size()), rows_.end());
    }

    /// Returns what follows.
    std::vector<OutagesRow>::iterator remove(
        std::vector<OutagesRow>::iterator first, std::vector<OutagesRow>::iterator end) {
        if (first == end) {
            return end;
        }
        const auto row = static_cast<int>(first - rows_.begin());
        beginRemoveRows({}, row, row + static_cast<int>(end - first) - 1);
        const auto following = rows_.erase(first, end);
        endRemoveRows();
        return following;
    }

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
    FormStyle::dress(*verticalScrollBar());
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void OutageList::showRows(const std::vector<OutagesRow>& rows) {
    const QScopedValueRollback quiet(isQuiet_, true);
    setAccessibleDescription(rows.empty() ? QLatin1String(noOutages) : QLatin1String());
    QScrollBar& bar = *verticalScrollBar();
    // At the top, a new row is seen; further down, what is seen stays where it is.
    const bool isAtTop = bar.value() == bar.minimum();
    const QPersistentModelIndex first = indexAt(QPoint());
    const int place = visualRect(first).top();
    rows_->update(rows);
    executeDelayedItemsLayout();
    if (!isAtTop && first.isValid()) {
        bar.setValue(bar.value() + visualRect(first).top() - place);
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
