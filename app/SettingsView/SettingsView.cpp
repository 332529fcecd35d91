#include "app/SettingsView/SettingsView.h"

#include "app/SettingsView/FormSection.h"
#include "app/SettingsView/IntervalBox.h"
#include "app/SettingsView/ThresholdSlider.h"
#include "app/StatusMenuView/ViewStyle.h"

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
#include <cmath>
#include <initializer_list>

namespace tarnwick {

namespace {

constexpr double viewWidth = 440;
constexpr double margin = 20;
constexpr double sectionGap = 18;
constexpr double hostWidth = 232;
constexpr double intervalWidth = 44;
constexpr double sliderWidth = 160;
constexpr double thresholdWidth = 64;
constexpr double controlHeight = 28;
constexpr double textInset = 3; ///< in the host's field
constexpr double buttonWidth = 200;

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

void showOn(QCheckBox& box, bool isOn) {
    const QSignalBlocker quiet(box);
    box.setChecked(isOn);
}

} // namespace

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this widget
SettingsView::SettingsView(SettingsModel& model, RunLoop& loop, QWidget* parent)
    : QWidget(parent),
      model_(model),
      loop_(loop),
      host_(new QLineEdit(this)),
      address_(new QLabel(this)),
      interval_(new IntervalBox(this)),
      threshold_(new ThresholdSlider(this)),
      thresholdText_(new QLabel(this)),
      display_(new QComboBox(this)),
      lossText_(new QComboBox(this)),
      alerts_(new QCheckBox(this)),
      launchAtLogin_(new QCheckBox(this)) {
    auto* const column = new QVBoxLayout(this);
    for (FormSection*& section : sections_) {
        section = new FormSection(this);
        column->addWidget(section);
    }
    makeHostSection();
    makeIntervalSection();
    makeThresholdSection();
    makeBehaviorSection();
    // The last one also for those who are led through the children.
    restore_ = new QPushButton(QStringLiteral("Restore Default Settings"), this);
    column->addWidget(restore_, 0, Qt::AlignHCenter);
    column->addStretch();
    restore_->setAutoDefault(false);
    connect(restore_, &QPushButton::clicked, this, [this] { restoreDefaults(); });
    applyStyle();
    showHost();
    render();
}

void SettingsView::makeHostSection() {
    FormSection& section = *sections_[0];
    section.addRow(QStringLiteral("Host to Ping"), {host_});
    connect(host_, &QLineEdit::editingFinished, this, [this] { commitHost(); });
    address_->setTextFormat(Qt::PlainText);
    address_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    address_->setWordWrap(true);
    address_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    addressRow_ = section.addRow(QStringLiteral("Address"), {address_});
    section.setFooter(
        QStringLiteral("Tarnwick constantly pings this host to measure the quality of your internet "
                       "connection. The bars show signal strength based on recent latency and packet loss."));
}

void SettingsView::makeIntervalSection() {
    FormSection& section = *sections_[1];
    section.addRow(QStringLiteral("Ping Every"), {interval_, new QLabel(QStringLiteral("s"), this)});
    interval_->onCommit = [this](int seconds) { model_.setPingInterval(seconds); };
    keepFromWheel(interval_);
    section.setFooter(
        QStringLiteral("1 to 60 seconds. Slower intervals send less traffic and use less battery, but the "
                       "bars react more slowly."));
}

void SettingsView::makeThresholdSection() {
    FormSection& section = *sections_[2];
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
    FormSection& section = *sections_[3];
    section.addRow(QStringLiteral("Display"), {display_});
    section.addRow(QStringLiteral("Packet Loss Text"), {lossText_});
    section.addRow(QStringLiteral("Connection Up/Down Alerts"), {alerts_});
    launchRow_ = section.addRow(QStringLiteral("Launch at Login"), {launchAtLogin_});
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

// NOLINTEND(cppcoreguidelines-owning-memory)

SettingsView::~SettingsView() {
    // A field that loses the keyboard on its way out would commit to a form that has gone.
    host_->disconnect(this);
    interval_->onCommit = nullptr;
}

QSize SettingsView::sizeHint() const {
    const int width = ViewStyle(*this).length(viewWidth);
    return {width, layout()->totalHeightForWidth(width)};
}

void SettingsView::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) {
        model_.launchAtLogin().refresh();
        showHost();
        rendering_ = std::make_unique<RenderLoop>(loop_, [this] { render(); });
    }
    QWidget::showEvent(event);
}

void SettingsView::hideEvent(QHideEvent* event) {
    if (!event->spontaneous()) {
        rendering_.reset();
    }
    QWidget::hideEvent(event);
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
    const int side = style.length(margin);
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
    for (QWidget* control :
         std::initializer_list<QWidget*>{host_, interval_, display_, lossText_, restore_}) {
        control->setMinimumHeight(style.length(controlHeight));
    }
    const int inset = style.length(textInset);
    host_->setTextMargins(inset, 0, inset, 0);
    restore_->setMinimumWidth(style.length(buttonWidth));
    const int pickerWidth = std::max(display_->sizeHint().width(), lossText_->sizeHint().width());
    display_->setMinimumWidth(pickerWidth);
    lossText_->setMinimumWidth(pickerWidth);
    updateGeometry();
}

void SettingsView::render() {
    if (host_->text() == shownHost_) {
        showHost();
    }
    const auto address = model_.addressLine();
    address_->setText(QString::fromStdString(address.value_or("")));
    addressRow_->setVisible(address.has_value());
    interval_->follow(static_cast<int>(model_.values().pingInterval()));
    showThreshold();
    showPicked(*display_, model_.values().display());
    showPicked(*lossText_, model_.values().lossTextMode());
    showOn(*alerts_, model_.values().showNotifications());
    showLaunchAtLogin();
}

void SettingsView::showHost() {
    shownHost_ = QString::fromStdString(model_.values().hostname());
    if (host_->text() != shownHost_) {
        host_->setText(shownHost_);
    }
}

void SettingsView::showThreshold() {
    const double ms = model_.values().slowPingThresholdMs();
    threshold_->follow(ms);
    thresholdText_->setText(locale().toString(std::round(ms), 'f', 0) + " ms");
}

void SettingsView::showLaunchAtLogin() {
    const QString message = QString::fromStdString(model_.launchAtLogin().message().value_or(""));
    showOn(*launchAtLogin_, model_.launchAtLogin().isOn());
    launchAtLogin_->setAccessibleDescription(message);
    launchRow_->setNote(message);
}

void SettingsView::commitHost() {
    if (host_->text() != shownHost_) {
        model_.commitHost(host_->text().toStdString());
        showHost();
    }
}

void SettingsView::restoreDefaults() {
    model_.restoreDefaults();
    showHost();
    interval_->reset(static_cast<int>(model_.values().pingInterval()));
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
