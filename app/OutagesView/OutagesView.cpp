#include "app/OutagesView/OutagesView.h"

#include "app/HistoryChartView/HistoryChartView.h"
#include "app/OutagesView/DayFigures.h"
#include "app/OutagesView/DayStrip.h"
#include "app/OutagesView/OutageList.h"
#include "app/OutagesView/ReportFile.h"
#include "app/OutagesView/StatusLine.h"
#include "app/ViewStyle/ControlLooks.h"
#include "app/ViewStyle/FormStyle.h"
#include "app/ViewStyle/KeyButton.h"
#include "app/ViewStyle/ViewStyle.h"
#include "platform/qt/Clipboard.h"

#include <QAction>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHideEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

#include <initializer_list>

namespace tarnwick {

namespace {

// Sizes of the design, in points.
constexpr double pageGap = 14;
constexpr double pageCardInset = 14;
constexpr double listCardInset = 5;
constexpr double dayChartHeight = 48;

} // namespace

class OutagesView::Card final : public QWidget {
public:
    Card(QWidget& content, double inset, QWidget* parent) : QWidget(parent), inset_(inset) {
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): owned by this widget
        auto* const column = new QVBoxLayout(this);
        column->addWidget(&content);
    }

    void setStyle(const ViewStyle& style) {
        const int inset = style.length(inset_);
        layout()->setContentsMargins(inset, inset, inset, inset);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        FormStyle::drawCard(painter, *this);
    }

private:
    double inset_;
};

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this widget
OutagesView::OutagesView(OutagesModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      strip_(new DayStrip(this)),
      date_(new QLabel(this)),
      title_(new QLabel(QStringLiteral("All Outages"), this)),
      figures_(new DayFigures(this)),
      chart_(new HistoryChartView(this)),
      list_(new OutageList(this)),
      status_(new StatusLine(this)),
      copy_(new KeyButton(QStringLiteral("&Copy"), this)),
      export_(new KeyButton(QStringLiteral("&Export…"), this)) {
    strip_->onChoose = [this](std::size_t day) { chooseDay(day); };
    list_->onChoose = [this](std::size_t row) {
        model_.chooseDay(model_.page().rows.at(row).day);
        showDay();
    };
    list_->onSelect = [this] { copy_->setEnabled(!list_->selectedText().empty()); };
    model_.onChange = [this] { render(); };
    chart_->setDesignHeight(dayChartHeight);
    makeButtons();
    makeColumn();
    applyStyle();
}

OutagesView::~OutagesView() {
    model_.onChange = nullptr;
}

void OutagesView::makeButtons() {
    for (QPushButton* const button : {copy_, export_}) {
        button->setAutoDefault(false);
    }
    copy_->setEnabled(false);
    copy_->setAccessibleDescription(QStringLiteral("Copies the selected outages"));
    export_->setAccessibleDescription(QStringLiteral("Writes a report of these days"));
    connect(copy_, &QPushButton::clicked, this, [this] { copy(); });
    connect(export_, &QPushButton::clicked, this, [this] { exportReport(); });
    auto* const copying = new QAction(QStringLiteral("Copy"), list_);
    copying->setShortcut(QKeySequence::Copy);
    copying->setShortcutContext(Qt::WidgetShortcut);
    connect(copying, &QAction::triggered, this, [this] { copy(); });
    list_->addAction(copying);
    list_->setContextMenuPolicy(Qt::ActionsContextMenu);
}

void OutagesView::makeColumn() {
    auto* const last = new QHBoxLayout;
    last->addWidget(status_, 1);
    last->addWidget(copy_);
    last->addWidget(export_);
    auto* const column = new QVBoxLayout(this);
    cards_ = {
        new Card(*strip_, pageCardInset, this), new Card(*figures_, pageCardInset, this),
        new Card(*chart_, pageCardInset, this), new Card(*list_, listCardInset, this)};
    column->addWidget(cards_[0]);
    column->addWidget(date_);
    column->addWidget(cards_[1]);
    column->addWidget(cards_[2]);
    column->addWidget(title_);
    column->addWidget(cards_[3], 1);
    column->addLayout(last);
    // Assistive technology reads them in the order in which they lie upon each other.
    for (QWidget* const part : std::initializer_list<QWidget*>{
             cards_[0], date_, cards_[1], cards_[2], title_, cards_[3], status_, copy_, export_}) {
        part->raise();
    }
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void OutagesView::applyStyle() {
    const ViewStyle style(*this);
    const int side = style.length(ViewStyle::windowMargin);
    layout()->setContentsMargins(side, side, side, side);
    layout()->setSpacing(style.length(pageGap));
    for (Card* const card : cards_) {
        card->setStyle(style);
    }
    for (QLabel* const heading : {date_, title_}) {
        heading->setFont(style.font(ViewStyle::headingText, QFont::DemiBold));
    }
    for (QPushButton* const button : {copy_, export_}) {
        FormStyle::dress(*button);
        ControlLooks::setHeight(*button, style);
        ControlLooks::setWidth(*button, style);
    }
}

void OutagesView::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) {
        model_.open();
        strip_->focusChosen();
    }
    QWidget::showEvent(event);
}

void OutagesView::hideEvent(QHideEvent* event) {
    // A desktop that hides the window leaves it open.
    if (!event->spontaneous()) {
        model_.close();
        failure_.clear();
        success_.clear();
        list_->showRows({});
    }
    QWidget::hideEvent(event);
}

void OutagesView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::PaletteChange:
    case QEvent::StyleChange:
        applyStyle();
        break;
    default:
        break;
    }
}

void OutagesView::paintEvent(QPaintEvent* /*event*/) {
    QPainter(this).fillRect(rect(), FormStyle::ground(palette()));
}

void OutagesView::render() {
    list_->showRows(model_.page().rows);
    showDay();
    showStatus();
}

void OutagesView::showDay() {
    strip_->showDays(model_.page().days, model_.chosenDay());
    date_->setText(QString::fromStdString(model_.page().days.at(model_.chosenDay()).date));
    figures_->showFigures(model_.figures());
    chart_->setChart(model_.chart());
}

void OutagesView::showStatus() {
    const QString ofExport = failure_.isEmpty() ? success_ : failure_;
    const QString text = ofExport.isEmpty() ? QString::fromStdString(model_.status()) : ofExport;
    status_->showText(text, !failure_.isEmpty());
}

void OutagesView::chooseDay(std::size_t day) {
    model_.chooseDay(day);
    list_->select(model_.page().rowOf(day));
    showDay();
}

void OutagesView::copy() {
    if (const std::string text = list_->selectedText(); !text.empty()) {
        Clipboard::copy(text);
    }
}

void OutagesView::exportReport() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QStringList filters = ReportFile::filters();
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): deletes itself when closed
    auto* const dialog = new QFileDialog(this, QStringLiteral("Export Outages"), folder);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilters(filters);
    // The toolkit's own dialog changes the name's end with the filter; others need not.
    const auto endAs = [dialog](ExportFormat format) {
        dialog->setDefaultSuffix(QString::fromStdString(std::string(endingOf(format))));
    };
    endAs(allExportFormats.front());
    dialog->selectFile(
        QString::fromStdString(model_.exportName() + "." + std::string(endingOf(allExportFormats.front()))));
    connect(dialog, &QFileDialog::filterSelected, this, [filters, endAs](const QString& filter) {
        const auto chosen = filters.indexOf(filter);
        if (chosen >= 0) {
            endAs(allExportFormats.at(static_cast<std::size_t>(chosen)));
        }
    });
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) { write(path); });
    dialog->open();
}

void OutagesView::write(const QString& path) {
    const std::string text = model_.exported(exportFormatOf(path.toStdString()));
    const QString reason = ReportFile::write(path, text);
    failure_ = reason.isEmpty() ? QString() : "The report could not be written to " + path + ": " + reason;
    success_ = reason.isEmpty() ? "The report is in " + path + "." : QString();
    showStatus();
}

} // namespace tarnwick
