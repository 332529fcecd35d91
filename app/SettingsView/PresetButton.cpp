#include "app/SettingsView/PresetButton.h"

#include "app/ViewStyle/FormStyle.h"
#include "app/ViewStyle/ViewStyle.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QShortcut>
#include <QStyleOptionButton>
#include <QStylePainter>

#include <utility>

namespace tarnwick {

namespace {

bool opensMenu(const QKeyEvent& key) {
    return key.key() == Qt::Key_Down || key.key() == Qt::Key_F4;
}

QString menuText(const HostPreset& preset) {
    const std::string text = preset.name + " — " + preset.address;
    return QString::fromStdString(text).replace(u'&', QLatin1String("&&"));
}

} // namespace

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by their parents
PresetButton::PresetButton(Source source, Choose choose, QLineEdit& field)
    : OpeningButton(Opens::menu, &field),
      source_(std::move(source)),
      choose_(std::move(choose)),
      field_(field),
      menu_(new QMenu(this)) {
    setAccessibleName(QStringLiteral("Choose Host"));
    setAccessibleDescription(QStringLiteral("Your router, your name server, and well-known public hosts"));
    setToolTip(QStringLiteral("Choose a host (Alt+O)"));
    setCursor(Qt::ArrowCursor);
    // A click leaves the focus in the field: its draft gives way only to a host that is chosen.
    setFocusPolicy(Qt::TabFocus);
    setTabOrder(&field, this);
    connect(this, &QPushButton::clicked, this, [this] { open(); });
    connect(menu_, &QMenu::aboutToHide, this, [this] { setOpen(false); });
    connect(menu_, &QMenu::triggered, this, [this](const QAction* action) {
        choose_(action->data().toString());
    });
    const auto* const shortcut = new QShortcut(Qt::AltModifier | Qt::Key_O, this);
    connect(shortcut, &QShortcut::activated, this, &QPushButton::click);
    field.installEventFilter(this);
    place();
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void PresetButton::open() {
    fill();
    const int width = menu_->sizeHint().width();
    const QPoint below(isRightToLeft() ? field_.width() - width : 0, field_.height());
    setOpen(true);
    menu_->popup(field_.mapToGlobal(below));
}

void PresetButton::fill() {
    FormStyle::dress(*menu_);
    menu_->clear();
    menu_->setMinimumWidth(field_.width());
    bool isOwn = false;
    for (const HostPreset& preset : source_()) {
        if (std::exchange(isOwn, preset.isOfOwnNetwork) && !preset.isOfOwnNetwork) {
            menu_->addSeparator();
        }
        QAction* const action = menu_->addAction(menuText(preset));
        const QString address = QString::fromStdString(preset.address);
        action->setData(address);
        action->setCheckable(address == field_.text());
        action->setChecked(action->isCheckable());
    }
}

QWidget* PresetButton::content() const {
    return menu_;
}

QSize PresetButton::sizeHint() const {
    return {FormStyle::arrowRoom(field_), field_.height()};
}

QSize PresetButton::minimumSizeHint() const {
    return sizeHint();
}

void PresetButton::place() {
    const int width = FormStyle::arrowRoom(field_);
    const bool isAtLeft = field_.isRightToLeft();
    setGeometry(isAtLeft ? 0 : field_.width() - width, 0, width, field_.height());
    field_.setTextMargins(isAtLeft ? width : 0, 0, isAtLeft ? 0 : width, 0);
}

bool PresetButton::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::Resize:
    case QEvent::LayoutDirectionChange:
    case QEvent::FontChange:
        place();
        break;
    case QEvent::KeyPress:
        if (const auto* const key = dynamic_cast<const QKeyEvent*>(event);
            key != nullptr && opensMenu(*key)) {
            click();
            return true;
        }
        break;
    default:
        break;
    }
    return OpeningButton::eventFilter(watched, event);
}

void PresetButton::keyPressEvent(QKeyEvent* event) {
    if (opensMenu(*event)) {
        click();
    } else {
        OpeningButton::keyPressEvent(event);
    }
}

void PresetButton::paintEvent(QPaintEvent* /*event*/) {
    QStyleOptionButton option;
    initStyleOption(&option);
    QStylePainter painter(this);
    painter.drawPrimitive(QStyle::PE_PanelButtonTool, option);
    painter.drawPrimitive(QStyle::PE_IndicatorArrowDown, option);
}

} // namespace tarnwick
