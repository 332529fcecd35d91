#include "app/SettingsView/AdvancedSection.h"

#include "app/SettingsView/DisclosureButton.h"
#include "app/SettingsView/EvenDigits.h"
#include "app/SettingsView/Picker.h"
#include "app/ViewStyle/ControlLooks.h"
#include "app/ViewStyle/FormStyle.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <initializer_list>

namespace tarnwick {

namespace {

constexpr double timeoutWidth = 74;

/// "1,000" is a thousand in some places and one in others.
QLocale withoutGroups(QLocale locale) {
    locale.setNumberOptions(QLocale::OmitGroupSeparator | QLocale::RejectGroupSeparator);
    return locale;
}

} // namespace

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this widget
AdvancedSection::AdvancedSection(SettingsModel& model, QWidget* parent)
    : FormSection(parent),
      model_(model),
      heading_(new DisclosureButton(QStringLiteral("Ad&vanced"), this)),
      timeout_(new QLineEdit(this)),
      draft_(*timeout_, *timeout_, [this] { commit(); }),
      form_(new QComboBox(this)),
      ink_(new QComboBox(this)),
      history_(new QCheckBox(this)),
      clearHistory_(new QPushButton(QStringLiteral("Clear History…"), this)),
      applications_(new QPushButton(this)) {
    qobject_cast<QVBoxLayout*>(layout())->insertWidget(0, heading_);
    connect(heading_, &QPushButton::clicked, this, [this] { open(!heading_->isOpen()); });
    // Posted: the window takes its new size first.
    connect(heading_, &QPushButton::clicked, this, &AdvancedSection::scrollIntoView, Qt::QueuedConnection);
    makeRows();
    open(false);
}

void AdvancedSection::makeRows() {
    timeout_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    timeoutRow_ =
        addRow(QStringLiteral("Ping Time-Out"), {timeout_, new QLabel(QStringLiteral("s"), this)}, 'M');
    timeout_->setAlignment(Qt::AlignRight);
    connect(timeout_, &QLineEdit::textChanged, this, [this] { showMistake(); });
    addRow(QStringLiteral("Form in the Panel"), {form_}, 'F');
    addRow(QStringLiteral("Color in the Panel"), {ink_}, 'I');
    Picker::offer(*form_, allForms, [this](auto picked) { model_.setPanelForm(picked); });
    Picker::offer(*ink_, Preferences::allPanelInks, [this](auto picked) { model_.setPanelInk(picked); });
    for (QComboBox* picker : {form_, ink_}) {
        picker->setFocusPolicy(Qt::StrongFocus); // the wheel scrolls the form
    }
    makeHistoryRow();
    applicationsRow_ = addRow(QStringLiteral("Your Applications"), {applications_});
    applications_->setAutoDefault(false);
    connect(applications_, &QPushButton::clicked, this, [this] { changeApplications(); });
    setFooter(
        QStringLiteral("A ping without an answer counts as lost after the time-out. Choose form and color if "
                       "the item does not fit your panel. The history never leaves this computer: it is one "
                       "file that only you can read, %1.")
            .arg(QString::fromStdString(model_.historyFile)));
}

void AdvancedSection::makeHistoryRow() {
    historyRow_ = addRow(QStringLiteral("Keep a History"), {history_}, 'K');
    clearHistory_->setAutoDefault(false);
    clearHistory_->setAccessibleDescription(QStringLiteral("Asks first"));
    historyRow_->addButton(*clearHistory_);
    connect(history_, &QCheckBox::toggled, this, [this](bool on) { model_.setKeepsHistory(on); });
    connect(clearHistory_, &QPushButton::clicked, this, [this] {
        if (model_.clearHistory) {
            model_.clearHistory();
        }
    });
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void AdvancedSection::open(bool isOpen) {
    heading_->setOpen(isOpen);
    setShowsRows(isOpen);
}

void AdvancedSection::scrollIntoView() {
    for (QWidget* each = parentWidget(); each != nullptr && heading_->isOpen(); each = each->parentWidget()) {
        if (auto* const area = qobject_cast<QScrollArea*>(each)) {
            area->ensureWidgetVisible(this);
        }
    }
}

void AdvancedSection::setStyle(const ViewStyle& style) {
    FormSection::setStyle(style);
    timeout_->setFixedWidth(style.length(timeoutWidth));
    timeout_->setFont(withEvenDigits(font()));
    const int pickerWidth = std::max(form_->sizeHint().width(), ink_->sizeHint().width());
    for (QWidget* control :
         std::initializer_list<QWidget*>{timeout_, form_, ink_, history_, clearHistory_, applications_}) {
        ControlLooks::setHeight(*control, style);
    }
    ControlLooks::setWidth(*clearHistory_, style);
    ControlLooks::setWidth(*applications_, style);
    for (QComboBox* picker : {form_, ink_}) {
        picker->setMinimumWidth(pickerWidth);
    }
}

void AdvancedSection::setShowsMnemonics(bool shows) {
    FormSection::setShowsMnemonics(shows);
    FormStyle::setShowsMnemonic(*heading_, shows);
}

void AdvancedSection::render() {
    const double seconds = model_.values().pingTimeout(); // always read: a draft must not end the tracking
    if (!draft_.exists()) {
        showTimeout(seconds);
    }
    Picker::show(*form_, model_.values().panelForm());
    Picker::show(*ink_, model_.values().panelInk());
    showHistory();
    showApplications();
}

void AdvancedSection::showHistory() {
    showOn(*history_, model_.values().keepsHistory());
    const QString problem = QString::fromStdString(model_.historyProblem());
    if (problem.isEmpty()) {
        historyRow_->setHint(QStringLiteral("Latency, loss and outages of two years"));
    } else {
        historyRow_->setNote(problem);
        history_->setAccessibleDescription(problem);
    }
}

void AdvancedSection::showApplications() {
    const auto& applications = model_.applications();
    applicationsRow_->setVisible(applications.has_value());
    if (applications) {
        const QString act =
            applications->haveIt ? QStringLiteral("Uninstall…") : QStringLiteral("Add Tarnwick");
        applications_->setText(act);
        applications_->setAccessibleName(act); // the row's label says where, not what
        applicationsRow_->setNote(QString::fromStdString(applications->problem));
    }
}

void AdvancedSection::changeApplications() {
    const auto& applications = model_.applications();
    if (applications && applications->haveIt) {
        model_.uninstall();
    } else {
        model_.answerApplications(true);
    }
}

void AdvancedSection::finish() {
    draft_.finish();
    dropDraft();
}

void AdvancedSection::dropDraft() {
    showTimeout(model_.values().pingTimeout());
}

void AdvancedSection::showTimeout(double seconds) {
    const QString text = withoutGroups(locale()).toString(seconds, 'g', QLocale::FloatingPointShortest);
    draft_.discard();
    if (timeout_->text() != text) {
        const QSignalBlocker quiet(timeout_);
        timeout_->setText(text);
    }
    showMistake();
}

std::optional<double> AdvancedSection::typedTimeout() const {
    const QString text = timeout_->text().trimmed();
    for (const QLocale& each : {withoutGroups(locale()), withoutGroups(QLocale::c())}) {
        bool isNumber = false;
        const double seconds = each.toDouble(text, &isNumber);
        if (isNumber) {
            return seconds;
        }
    }
    return std::nullopt;
}

void AdvancedSection::showMistake() {
    const auto seconds = typedTimeout();
    const bool isEmpty = timeout_->text().trimmed().isEmpty(); // it is about to be filled
    const bool isMistake =
        draft_.exists() && !isEmpty && !(seconds && SettingsModel::admitsPingTimeout(*seconds));
    const QString mistake = isMistake ? QString::fromStdString(SettingsModel::pingTimeoutRule()) : QString();
    timeoutRow_->setNote(mistake);
    timeout_->setAccessibleDescription(isMistake ? mistake : footer());
}

void AdvancedSection::commit() {
    const auto seconds = typedTimeout();
    if (seconds && SettingsModel::admitsPingTimeout(*seconds)) {
        model_.setPingTimeout(*seconds);
    } else if (timeout_->hasFocus() && !timeout_->text().trimmed().isEmpty()) {
        draft_.resume(); // Enter leaves it in the field for mending
        return;
    }
    dropDraft();
}

} // namespace tarnwick
