#include "app/SettingsView/SettingsView.h"

#include "app/NoticesView/NoticesView.h"
#include "app/Reading/Format.h"
#include "app/SettingsView/ControlLooks.h"
#include "app/SettingsView/FormSection.h"
#include "app/SettingsView/IntervalBox.h"
#include "app/SettingsView/ThresholdSlider.h"
#include "app/SettingsView/UpdateSection.h"
#include "app/ViewStyle/ViewStyle.h"
#include "core/HostText.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <variant>

namespace tarnwick {

namespace {

constexpr double formWidth = 440;
constexpr double formMargin = 20;
constexpr double sectionGap = 18;
constexpr double hostWidth = 232;
constexpr double intervalWidth = 44;
constexpr double sliderWidth = 160;
constexpr double thresholdWidth = 64;
constexpr double textInset = 2; ///< in the host field

QString displayTitle(Preferences::Display display) {
    switch (display) {
    case Preferences::Display::iconOnly:
        return QStringLiteral("Icon Only");
    case Preferences::Display::textOnly:
        return QStringLiteral("Text Only");
    case Preferences::Display::iconAndText:
        break;
    }
    return QStringLiteral("Icon and Text");
}

QString lossTextTitle(MenuBarTitle::LossMode mode) {
    switch (mode) {
    case MenuBarTitle::LossMode::off:
        return QStringLiteral("Off");
    case MenuBarTitle::LossMode::always:
        return QStringLiteral("Always");
    case MenuBarTitle::LossMode::whenLossy:
        break;
    }
    return QStringLiteral("When There's Loss");
}

/// Nothing for a text that can be a host, and for an empty field: that one is about to be filled.
std::optional<QString> noHostText(const std::string& text) {
    const auto found = hostIn(text);
    const auto* const mistake = std::get_if<HostMistake>(&found);
    if (mistake == nullptr || *mistake == HostMistake::empty) {
        return std::nullopt;
    }
    const std::string_view why = reason(*mistake);
    QString sentence = QString::fromUtf8(why.data(), static_cast<qsizetype>(why.size()));
    sentence[0] = sentence[0].toUpper();
    return sentence;
}

/// Fills a picker with the cases of an enumeration, and hands on what is picked.
template<class Cases, class Title, class Pick>
void offer(QComboBox& picker, const Cases& cases, Title title, Pick pick) {
    for (const auto each : cases) {
        picker.addItem(title(each), static_cast<int>(each));
    }
    QObject::connect(&picker, &QComboBox::currentIndexChanged, &picker, [&picker, pick](int index) {
        pick(static_cast<typename Cases::value_type>(picker.itemData(index).toInt()));
    });
}

template<class Case>
void showPicked(QComboBox& picker, Case picked) {
    const QSignalBlocker quiet(picker);
    picker.setCurrentIndex(picker.findData(static_cast<int>(picked)));
}

} // namespace

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this widget
SettingsView::SettingsView(SettingsModel& model, RunLoop& loop, QWidget* parent)
    : QWidget(parent),
      model_(model),
      loop_(loop),
      host_(new QLineEdit(this)),
      hostDraft_(*host_, *host_, [this] { commitHost(); }),
      address_(new QLabel(this)),
      interval_(new IntervalBox(intervalSetting(), this)),
      threshold_(new ThresholdSlider(this)),
      thresholdText_(new QLabel(this)),
      display_(new QComboBox(this)),
      lossText_(new QComboBox(this)),
      testAlert_(new QPushButton(QStringLiteral("Test"), this)),
      alerts_(new QCheckBox(this)),
      launchAtLogin_(new QCheckBox(this)) {
    auto* const column = new QVBoxLayout(this);
    makeHostSection();
    makeIntervalSection();
    makeThresholdSection();
    makeBehaviorSection();
    if (UpdateSettings* const updates = model_.updates()) {
        updates_ = new UpdateSection(*updates, this);
        sections_.push_back(updates_);
    }
    for (FormSection* const section : sections_) {
        column->addWidget(section);
    }
    makeRestoreButton();
    column->addWidget(restore_, 0, Qt::AlignTrailing);
    column->addStretch();
    applyStyle();
    render();
}

FormSection& SettingsView::addSection() {
    sections_.push_back(new FormSection(this));
    return *sections_.back();
}

void SettingsView::makeHostSection() {
    FormSection& section = addSection();
    section.addRow(QStringLiteral("Host to Ping"), {host_});
    address_->setTextFormat(Qt::PlainText);
    address_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    address_->setWordWrap(true);
    address_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    section.addRow(QStringLiteral("Address"), {address_});
    connect(host_, &QLineEdit::textChanged, this, [this] { showAddress(); });
    section.setFooter(
        QStringLiteral("Tarnwick constantly pings this host to measure the quality of your internet "
                       "connection. The bars show signal strength based on recent latency and packet loss."));
    hostFooter_ = host_->accessibleDescription();
}

void SettingsView::makeIntervalSection() {
    FormSection& section = addSection();
    section.addRow(QStringLiteral("Ping Every"), {interval_, new QLabel(QStringLiteral("s"), this)});
    keepFromWheel(interval_);
    section.setFooter(
        QStringLiteral("1 to 60 seconds. Slower intervals send less traffic and use less battery, but the "
                       "bars react more slowly."));
}

void SettingsView::makeThresholdSection() {
    FormSection& section = addSection();
    section.addRow(QStringLiteral("Slow Ping Threshold"), {threshold_, thresholdText_});
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
    displayRow_ = section.addRow(QStringLiteral("Display"), {display_});
    lossTextRow_ = section.addRow(QStringLiteral("Packet Loss Text"), {lossText_});
    alertsRow_ = section.addRow(QStringLiteral("Connection Up/Down Alerts"), {alerts_});
    testAlert_->setAutoDefault(false);
    testAlert_->setAccessibleDescription(QStringLiteral("Shows a notification"));
    alertsRow_->addButton(*testAlert_);
    connect(testAlert_, &QPushButton::clicked, this, [this] { model_.testNotification(); });
    launchRow_ = section.addRow(QStringLiteral("Launch at Login"), {launchAtLogin_});
    launchRow_->addRemedy(
        QStringLiteral("Startup Settings…"), [this] { model_.launchAtLogin().showApproval(); });
    offer(*display_, Preferences::allDisplays, displayTitle, [this](auto picked) {
        model_.setDisplay(picked);
    });
    offer(*lossText_, MenuBarTitle::allLossModes, lossTextTitle, [this](auto picked) {
        model_.setLossTextMode(picked);
    });
    keepFromWheel(display_);
    keepFromWheel(lossText_);
    connect(alerts_, &QCheckBox::toggled, this, [this](bool on) { model_.setShowNotifications(on); });
    connect(launchAtLogin_, &QCheckBox::toggled, this, [this](bool on) {
        model_.launchAtLogin().set(on);
        showLaunchAtLogin();
    });
}

void SettingsView::makeRestoreButton() {
    restore_ = new QPushButton(QStringLiteral("Restore Default Settings"), this);
    restore_->setAutoDefault(false);
    // A click leaves the focus in the field: its draft is to be dropped, not committed.
    restore_->setFocusPolicy(Qt::TabFocus);
    connect(restore_, &QPushButton::clicked, this, [this] { restoreDefaults(); });
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
        hostDraft_.finish();
        showHost(model_.values().hostname()); // a text that can be no host goes
        interval_->finish();
        model_.flush(); // after the drafts: all that was changed here is to survive a power cut
        rendering_.reset();
    }
    QWidget::hideEvent(event);
}

bool SettingsView::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) {
        model_.launchAtLogin().follow();
    }
    return QWidget::event(event);
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
    const int side = style.length(formMargin);
    layout()->setContentsMargins(side, side, side, side);
    layout()->setSpacing(style.length(sectionGap));
    host_->setFixedWidth(style.length(hostWidth));
    interval_->setFieldWidth(style.length(intervalWidth));
    threshold_->setFixedWidth(style.length(sliderWidth));
    thresholdText_->setFixedWidth(style.length(thresholdWidth));
    for (QLabel* value : {address_, thresholdText_}) {
        setTextColor(*value, style.colors().secondary());
        alignText(*value, Qt::AlignTrailing);
    }
    for (QWidget* control : std::initializer_list<QWidget*>{
             host_, interval_, display_, lossText_, testAlert_, alerts_, launchAtLogin_, restore_}) {
        ControlLooks::setHeight(*control, style);
    }
    ControlLooks::setWidth(*restore_, style);
    ControlLooks::setWidth(*testAlert_, style);
    const int inset = style.length(textInset);
    host_->setTextMargins(inset, 0, inset, 0);
    ControlLooks::setEdge(*restore_);
    const int pickerWidth = std::max(display_->sizeHint().width(), lossText_->sizeHint().width());
    display_->setMinimumWidth(pickerWidth);
    lossText_->setMinimumWidth(pickerWidth);
    updateGeometry();
}

void SettingsView::render() {
    const std::string& host = model_.values().hostname(); // always read: a draft must not end the tracking
    if (!hostDraft_.exists()) {
        showHost(host);
    }
    showAddress();
    showNotices(model_.notices());
    interval_->follow();
    showThreshold();
    showDisplay();
    showAlerts();
    showLaunchAtLogin();
    if (updates_ != nullptr) {
        updates_->render();
    }
}

void SettingsView::showHost(const std::string& host) {
    const QString text = QString::fromStdString(host);
    hostDraft_.discard();
    if (host_->text() != text) { // an equal text keeps the cursor's place
        const QSignalBlocker quiet(host_);
        host_->setText(text);
    }
    showAddress();
}

void SettingsView::showAddress() {
    const std::string& address = model_.addressLine(); // always read: a draft must not end the tracking
    const auto mistake = hostDraft_.exists() ? noHostText(host_->text().toStdString()) : std::nullopt;
    const ViewStyle style(*this);
    address_->setText(mistake.value_or(QString::fromStdString(address)));
    setTextColor(*address_, mistake ? style.colors().bad() : style.colors().secondary());
    host_->setAccessibleDescription(mistake.value_or(hostFooter_));
}

void SettingsView::showDisplay() {
    const Preferences::Display display = model_.values().display();
    const MenuBarTitle::LossMode lossText = model_.values().lossTextMode();
    showPicked(*display_, display);
    showPicked(*lossText_, lossText);
    const bool showsText = display != Preferences::Display::iconOnly;
    const bool showsLoss = lossText != MenuBarTitle::LossMode::off;
    QString ofDisplay;
    QString ofLossText;
    if (!model_.hasRoomForText()) {
        ofDisplay =
            showsText ? QStringLiteral("Your panel has room for the latency’s figure only.") : ofDisplay;
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
    const int width = style.length(formWidth) - 2 * style.length(formMargin);
    const NoticeActions actions{.allowPinging = model_.allowPinging};
    notices_ = NoticesView::inPlaceOf(notices_, notices, actions, width, this);
    if (notices_ != nullptr) {
        qobject_cast<QVBoxLayout*>(layout())->insertWidget(0, notices_);
    }
    updateGeometry();
}

void SettingsView::commitHost() {
    const std::string text = host_->text().toStdString();
    if (host_->hasFocus() && noHostText(text)) {
        hostDraft_.resume(); // Enter leaves it in the field for mending
        return;
    }
    model_.commitHost(text);
    showHost(model_.values().hostname());
}

void SettingsView::restoreDefaults() {
    model_.restoreDefaults();
    showHost(model_.values().hostname());
    interval_->reset();
}

void SettingsView::keepFromWheel(QWidget* control) {
    control->setFocusPolicy(Qt::StrongFocus);
    control->installEventFilter(this);
}

bool SettingsView::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Wheel) {
        const auto* const control = qobject_cast<QWidget*>(watched);
        if (control != nullptr && !control->hasFocus()) {
            event->ignore();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace tarnwick
