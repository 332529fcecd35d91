#include "app/SettingsView/SettingsView.h"

#include "app/NoticesView/NoticesView.h"
#include "app/Reading/Format.h"
#include "app/SettingsView/AdvancedSection.h"
#include "app/SettingsView/FormSection.h"
#include "app/SettingsView/HostSection.h"
#include "app/SettingsView/IntervalBox.h"
#include "app/SettingsView/Picker.h"
#include "app/SettingsView/ThresholdSlider.h"
#include "app/SettingsView/UpdateSection.h"
#include "app/ViewStyle/ControlLooks.h"
#include "app/ViewStyle/FormStyle.h"
#include "app/ViewStyle/LabelLooks.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QShowEvent>
#include <QVBoxLayout>

#include <algorithm>
#include <initializer_list>

namespace tarnwick {

namespace {

constexpr double formWidth = 440;
constexpr double sectionGap = 18;
constexpr double intervalWidth = 44;
constexpr double sliderWidth = 160;
constexpr double thresholdWidth = 64;

} // namespace

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this widget
SettingsView::SettingsView(SettingsModel& model, RunLoop& loop, QWidget* parent)
    : QWidget(parent),
      model_(model),
      loop_(loop),
      host_(new HostSection(model, this)),
      interval_(new IntervalBox(intervalSetting(), this)),
      threshold_(new ThresholdSlider(this)),
      thresholdText_(new QLabel(this)),
      display_(new QComboBox(this)),
      lossText_(new QComboBox(this)),
      alerts_(new QCheckBox(this)),
      testAlert_(new QPushButton(QStringLiteral("&Test"), this)),
      launchAtLogin_(new QCheckBox(this)) {
    auto* const column = new QVBoxLayout(this);
    sections_.push_back(host_);
    makeIntervalSection();
    makeThresholdSection();
    makeBehaviorSection();
    if (UpdateSettings* const updates = model_.updates()) {
        updates_ = new UpdateSection(*updates, this);
        sections_.push_back(updates_);
    }
    advanced_ = new AdvancedSection(model_, this);
    sections_.push_back(advanced_);
    for (FormSection* const section : sections_) {
        column->addWidget(section);
    }
    makeRestoreButtons();
    auto* const last = new QHBoxLayout;
    last->addWidget(restore_);
    last->addWidget(undo_);
    last->addStretch();
    column->addLayout(last);
    // Fields do not hand on the release of a key.
    for (QWidget* each : findChildren<QWidget*>()) {
        if (each->focusPolicy() != Qt::NoFocus) {
            each->installEventFilter(this);
        }
    }
    applyStyle();
    render();
}

FormSection& SettingsView::addSection() {
    sections_.push_back(new FormSection(this));
    return *sections_.back();
}

void SettingsView::makeIntervalSection() {
    FormSection& section = addSection();
    section.addRow(QStringLiteral("Ping Every"), {interval_, new QLabel(QStringLiteral("s"), this)}, 'P');
    keepFromWheel(interval_);
    section.setFooter(
        QStringLiteral("1 to 60 seconds. Slower intervals send less traffic and use less battery, but the "
                       "bars react more slowly."));
}

void SettingsView::makeThresholdSection() {
    FormSection& section = addSection();
    section.addRow(QStringLiteral("Slow Ping Threshold"), {threshold_, thresholdText_}, 'S');
    threshold_->onMove = [this](double ms) {
        model_.setSlowPingThresholdMs(ms);
        showThreshold();
    };
    keepFromWheel(threshold_);
    section.setFooter(
        QStringLiteral("Pings faster than the threshold count as perfect. Slower pings lower the signal "
                       "strength until it reaches zero at threshold + 900 ms."));
}

void SettingsView::makeBehaviorSection() {
    FormSection& section = addSection();
    displayRow_ = section.addRow(QStringLiteral("Display"), {display_}, 'D');
    lossTextRow_ = section.addRow(QStringLiteral("Packet Loss Text"), {lossText_}, 'L');
    alertsRow_ = section.addRow(QStringLiteral("Connection Up/Down Alerts"), {alerts_}, 'C');
    testAlert_->setAutoDefault(false);
    testAlert_->setAccessibleDescription(QStringLiteral("Shows a notification"));
    alertsRow_->addButton(*testAlert_);
    connect(testAlert_, &QPushButton::clicked, this, [this] { model_.testNotification(); });
    launchRow_ = section.addRow(QStringLiteral("Launch at Login"), {launchAtLogin_}, 'A');
    launchRow_->addRemedy(
        QStringLiteral("Startup Settings…"), [this] { model_.launchAtLogin().showApproval(); });
    Picker::offer(*display_, Preferences::allDisplays, [this](auto picked) { model_.setDisplay(picked); });
    Picker::offer(
        *lossText_, MenuBarTitle::allLossModes, [this](auto picked) { model_.setLossTextMode(picked); });
    keepFromWheel(display_);
    keepFromWheel(lossText_);
    connect(alerts_, &QCheckBox::toggled, this, [this](bool on) { model_.setShowNotifications(on); });
    connect(launchAtLogin_, &QCheckBox::toggled, this, [this](bool on) {
        model_.launchAtLogin().set(on);
        showLaunchAtLogin();
    });
}

void SettingsView::makeRestoreButtons() {
    restore_ = new QPushButton(QStringLiteral("&Restore Default Settings"), this);
    undo_ = new QPushButton(QStringLiteral("&Undo"), this);
    undo_->setAccessibleDescription(QStringLiteral("Brings back the settings of before"));
    undo_->hide();
    for (QPushButton* button : {restore_, undo_}) {
        button->setAutoDefault(false);
        FormStyle::dress(*button);
        // A click leaves the focus in the field: its draft is to be dropped, not committed.
        button->setFocusPolicy(Qt::TabFocus);
    }
    connect(restore_, &QPushButton::clicked, this, [this] {
        model_.restoreDefaults();
        showAllAgain();
    });
    connect(undo_, &QPushButton::clicked, this, [this] {
        if (undo_->hasFocus()) {
            restore_->setFocus(); // the button goes
        }
        model_.undoRestoring();
        showAllAgain();
    });
}

// NOLINTEND(cppcoreguidelines-owning-memory)

IntervalBox::Setting SettingsView::intervalSetting() {
    return {
        .get = [this] { return static_cast<int>(model_.values().pingInterval()); },
        .set = [this](int seconds) { model_.setPingInterval(seconds); }};
}

SettingsView::~SettingsView() {
    // A field that loses the focus while it is destroyed would commit to a form that is gone.
    interval_->reset();
}

QSize SettingsView::sizeHint() const {
    const int width = ViewStyle(*this).length(formWidth);
    return {width, layout()->totalHeightForWidth(width)};
}

void SettingsView::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) {
        model_.refresh();
        rendering_ = std::make_unique<RenderLoop>(loop_, [this] { render(); });
    }
    QWidget::showEvent(event);
}

void SettingsView::hideEvent(QHideEvent* event) {
    // A desktop that hides the window leaves it open: there is no need to wait for the disk.
    if (!event->spontaneous()) {
        host_->finish();
        interval_->finish();
        advanced_->finish();
        model_.flush(); // after the drafts: all that was changed here is to survive a power cut
        rendering_.reset();
        model_.forgetRestoring();
        undo_->hide();
    }
    QWidget::hideEvent(event);
}

bool SettingsView::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) {
        model_.launchAtLogin().follow();
    } else if (event->type() == QEvent::WindowDeactivate) {
        showMnemonics(false); // another window gets the key's release
    }
    return QWidget::event(event);
}

void SettingsView::paintEvent(QPaintEvent* /*event*/) {
    QPainter(this).fillRect(rect(), FormStyle::ground(palette()));
}

void SettingsView::showMnemonics(bool shows) {
    for (FormSection* section : sections_) {
        section->setShowsMnemonics(shows);
    }
    for (QPushButton* button : {restore_, undo_}) {
        FormStyle::setShowsMnemonic(*button, shows);
    }
}

void SettingsView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::PaletteChange:
    case QEvent::StyleChange:
    case QEvent::LayoutDirectionChange:
        applyStyle();
        break;
    case QEvent::LocaleChange:
        showThreshold();
        interval_->follow();
        break;
    default:
        break;
    }
}

void SettingsView::applyStyle() {
    const ViewStyle style(*this);
    for (FormSection* section : sections_) {
        section->setStyle(style);
    }
    const int side = style.length(ViewStyle::windowMargin);
    layout()->setContentsMargins(side, side, side, side);
    layout()->setSpacing(style.length(sectionGap));
    interval_->setFieldWidth(style.length(intervalWidth));
    threshold_->setFixedWidth(style.length(sliderWidth));
    thresholdText_->setFixedWidth(style.length(thresholdWidth));
    setTextColor(*thresholdText_, style.colors().secondary());
    alignText(*thresholdText_, Qt::AlignTrailing);
    for (QWidget* control : std::initializer_list<QWidget*>{
             interval_, display_, lossText_, testAlert_, alerts_, launchAtLogin_, restore_, undo_}) {
        ControlLooks::setHeight(*control, style);
    }
    ControlLooks::setWidth(*restore_, style);
    ControlLooks::setWidth(*undo_, style);
    ControlLooks::setWidth(*testAlert_, style);
    const std::initializer_list<QComboBox*> pickers{display_, lossText_};
    int pickerWidth = 0;
    for (const QComboBox* const picker : pickers) {
        pickerWidth = std::max(pickerWidth, picker->sizeHint().width());
    }
    for (QComboBox* const picker : pickers) {
        picker->setMinimumWidth(pickerWidth);
    }
    updateGeometry();
}

void SettingsView::render() {
    host_->render();
    showNotices(model_.notices());
    interval_->follow();
    showThreshold();
    showDisplay();
    showAlerts();
    showLaunchAtLogin();
    advanced_->render();
    if (updates_ != nullptr) {
        updates_->render();
    }
}

void SettingsView::showDisplay() {
    const Preferences::Display display = model_.values().display();
    const MenuBarTitle::LossMode lossText = model_.values().lossTextMode();
    Picker::show(*display_, display);
    Picker::show(*lossText_, lossText);
    const bool showsText = display != Preferences::Display::iconOnly;
    const bool showsLoss = lossText != MenuBarTitle::LossMode::off;
    QString ofDisplay;
    QString ofLossText;
    if (!model_.hasRoomForText()) {
        ofDisplay = showsText ? QStringLiteral("Your panel shows the figure only.") : ofDisplay;
        ofLossText = showsLoss ? QStringLiteral("Your panel has no room for it.") : ofLossText;
    } else if (showsLoss && !showsText) {
        ofLossText = QStringLiteral("Only shown with the latency.");
    }
    displayRow_->setHint(ofDisplay);
    lossTextRow_->setHint(ofLossText);
}

void SettingsView::showThreshold() {
    const double ms = model_.values().slowPingThresholdMs();
    threshold_->follow(ms);
    thresholdText_->setText(QString::fromStdString(Format::wholeMs(ms)));
}

void SettingsView::showLaunchAtLogin() {
    const QString message = QString::fromStdString(model_.launchAtLogin().message().value_or(""));
    showOn(*launchAtLogin_, model_.launchAtLogin().isOn());
    launchAtLogin_->setAccessibleDescription(message);
    launchRow_->setNote(message, model_.launchAtLogin().leadsToApproval());
}

void SettingsView::showAlerts() {
    const bool isMute = model_.canNotify() == NotificationCenter::Ability::no;
    const QString message = isMute ? QStringLiteral("Nothing here shows notifications.") : QString();
    showOn(*alerts_, model_.values().showNotifications());
    alerts_->setAccessibleDescription(message);
    alertsRow_->setNote(message);
}

void SettingsView::showNotices(const Notices& notices) {
    if (notices == shownNotices_) {
        return;
    }
    shownNotices_ = notices;
    const ViewStyle style(*this);
    const int width = style.length(formWidth) - 2 * style.length(ViewStyle::windowMargin);
    const NoticeActions actions{
        .allowPinging = model_.allowPinging,
        .answerOffer = model_.answerOffer,
        .answerApplications = model_.answerApplications,
        .restart = model_.restart};
    notices_ = NoticesView::inPlaceOf(notices_, notices, actions, width, this);
    if (notices_ != nullptr) {
        // Last: they come and go while the pointer is on its way to a row.
        layout()->addWidget(notices_);
    }
    updateGeometry();
}

void SettingsView::dropDrafts() {
    host_->dropDraft();
    interval_->reset();
    advanced_->dropDraft();
}

void SettingsView::showAllAgain() {
    dropDrafts();
    undo_->setVisible(model_.canUndoRestoring());
}

void SettingsView::keepFromWheel(QWidget* control) {
    control->setFocusPolicy(Qt::StrongFocus);
    control->installEventFilter(this);
}

bool SettingsView::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
        const auto* const key = dynamic_cast<const QKeyEvent*>(event);
        if (key != nullptr && key->key() == Qt::Key_Alt) {
            showMnemonics(event->type() == QEvent::KeyPress);
        }
    } else if (event->type() == QEvent::Wheel) {
        const auto* const control = qobject_cast<QWidget*>(watched);
        if (control != nullptr && !control->hasFocus()) {
            event->ignore();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace tarnwick
