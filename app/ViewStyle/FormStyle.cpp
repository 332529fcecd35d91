#include "app/ViewStyle/FormStyle.h"

#include "app/ViewStyle/ViewStyle.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QStyleOption>
#include <QWidget>

#include <algorithm>
#include <array>

namespace tarnwick {

namespace {

// Sizes of the design, in points.
constexpr double fieldRadius = 6;
constexpr double textInset = 10;
constexpr double arrowWidth = 26; ///< the part of a field that holds its arrow or arrows
constexpr double arrowHalf = 4;
constexpr double switchWidth = 34;
constexpr double switchHeight = 20;
constexpr double knobInset = 3;
constexpr double sliderKnob = 18;
constexpr double grooveHeight = 4;
constexpr double cornerRadius = 10; ///< of a card
constexpr double scrollBarWidth = 12;
constexpr double scrollBarInset = 3; ///< of the handle, at both sides
constexpr double shortestHandle = 28;

// Shares of the text's color in that of the window.
constexpr double edgeShare = 0.48;
constexpr double grooveShare = 0.22;
constexpr double fieldShare = 0.03;
constexpr double buttonShare = 0.07;
constexpr double hoverShare = 0.05;
constexpr double pressShare = 0.1;

constexpr double handleShare = 0.3; ///< more under the pointer

constexpr float edgeOpacity = 0.11F; ///< of a card

constexpr auto showsMnemonicProperty = "showsMnemonic";

double length(const QWidget* widget, double points) {
    return widget != nullptr ? ViewStyle(*widget).length(points) : points;
}

QColor between(const QPalette& palette, double share) {
    return FormStyle::mixed(FormStyle::card(palette), palette.color(QPalette::WindowText), share);
}

QColor accent(const QStyleOption& option) {
    return option.palette.color(QPalette::Active, QPalette::Highlight);
}

bool is(const QStyleOption& option, QStyle::StateFlag flag) {
    return option.state.testFlag(flag);
}

/// A rounded box with a thin edge; with the focus a thicker one in the accent's color.
void drawBox(QPainter& painter, const QStyleOption& option, const QColor& fill, double radius) {
    const bool hasFocus = is(option, QStyle::State_HasFocus);
    const double width = hasFocus ? 2 : 1;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(hasFocus ? accent(option) : between(option.palette, edgeShare), width));
    painter.setBrush(fill);
    const double half = width / 2;
    painter.drawRoundedRect(QRectF(option.rect).adjusted(half, half, -half, -half), radius, radius);
    painter.restore();
}

QColor fieldFill(const QStyleOption& option) {
    return between(option.palette, fieldShare);
}

QColor buttonFill(const QStyleOption& option) {
    if (is(option, QStyle::State_Sunken)) {
        return between(option.palette, buttonShare + pressShare);
    }
    const bool isHovered = is(option, QStyle::State_MouseOver) && is(option, QStyle::State_Enabled);
    return between(option.palette, buttonShare + (isHovered ? hoverShare : 0));
}

/// Nothing at rest.
void drawFlatButton(QPainter& painter, const QStyleOption& option, double radius) {
    const bool isSunken = is(option, QStyle::State_Sunken);
    const bool hasFocus = is(option, QStyle::State_HasFocus);
    if (!isSunken && !hasFocus && !is(option, QStyle::State_MouseOver)) {
        return;
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(hasFocus ? QPen(accent(option), 2) : QPen(Qt::NoPen));
    painter.setBrush(between(option.palette, isSunken ? buttonShare + pressShare : buttonShare));
    painter.drawRoundedRect(QRectF(option.rect).adjusted(2, 2, -2, -2), radius, radius);
    painter.restore();
}

/// Two strokes that meet below the middle, or above it.
void drawArrow(QPainter& painter, QPointF middle, double half, bool isUp, const QColor& color) {
    const double rise = half / 2 * (isUp ? -1 : 1);
    const std::array points{
        middle + QPointF(-half, -rise), middle + QPointF(0, rise), middle + QPointF(half, -rise)};
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(points.data(), static_cast<int>(points.size()));
    painter.restore();
}

void drawSwitch(QPainter& painter, const QStyleOption& option) {
    const bool isOn = is(option, QStyle::State_On);
    const QRectF pill(option.rect);
    const QColor edge = between(option.palette, edgeShare);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(isOn ? accent(option) : edge, 1));
    painter.setBrush(isOn ? accent(option) : fieldFill(option));
    const double round = pill.height() / 2;
    painter.drawRoundedRect(pill.adjusted(0.5, 0.5, -0.5, -0.5), round, round);
    const double side = pill.height() - 2 * knobInset;
    const bool isAtRight = isOn == (option.direction == Qt::LeftToRight);
    const double left = isAtRight ? pill.right() - knobInset - side : pill.left() + knobInset;
    painter.setPen(Qt::NoPen);
    painter.setBrush(isOn ? option.palette.color(QPalette::HighlightedText) : edge);
    painter.drawEllipse(QRectF(left, pill.top() + knobInset, side, side));
    if (is(option, QStyle::State_HasFocus)) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(isOn ? option.palette.color(QPalette::WindowText) : accent(option), 2));
        painter.drawRoundedRect(pill.adjusted(1, 1, -1, -1), round, round);
    }
    painter.restore();
}

void drawSlider(
    QPainter& painter, const QStyleOptionSlider& option, const QRectF& groove, const QRectF& knob) {
    const double round = groove.height() / 2;
    QRectF filled = groove;
    if (option.upsideDown) {
        filled.setLeft(knob.center().x());
    } else {
        filled.setRight(knob.center().x());
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(between(option.palette, grooveShare));
    painter.drawRoundedRect(groove, round, round);
    painter.setBrush(accent(option));
    painter.drawRoundedRect(filled, round, round);
    const bool hasFocus = is(option, QStyle::State_HasFocus);
    const double width = hasFocus ? 2 : 1;
    painter.setPen(QPen(hasFocus ? accent(option) : between(option.palette, edgeShare), width));
    painter.setBrush(Qt::white);
    painter.drawEllipse(knob.adjusted(1, 1, -1, -1));
    painter.restore();
}

/// The handle alone, without arrows and groove.
void drawScrollBar(QPainter& painter, const QStyleOptionSlider& option, const QRectF& handle, double inset) {
    if (option.maximum <= option.minimum) {
        return;
    }
    const bool isActive = is(option, QStyle::State_MouseOver) || is(option, QStyle::State_Sunken);
    const bool isUpright = option.orientation == Qt::Vertical;
    const QRectF pill =
        isUpright ? handle.adjusted(inset, 1, -inset, -1) : handle.adjusted(1, inset, -1, -inset);
    const double round = std::min(pill.width(), pill.height()) / 2;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(between(option.palette, isActive ? edgeShare : handleShare));
    painter.drawRoundedRect(pill, round, round);
    painter.restore();
}

/// A part of a scroll bar; empty for the arrows, which it has not.
QRect scrollBarPart(const QStyleOptionSlider& option, QStyle::SubControl part, int shortest) {
    const QRect whole = option.rect;
    const bool isUpright = option.orientation == Qt::Vertical;
    const int room = isUpright ? whole.height() : whole.width();
    const int range = option.maximum - option.minimum;
    const int handle =
        range > 0
            ? std::clamp(room * option.pageStep / (range + option.pageStep), std::min(shortest, room), room)
            : room;
    const int from = QStyle::sliderPositionFromValue(
        option.minimum, option.maximum, option.sliderPosition, room - handle, option.upsideDown);
    const auto placed = [&](int begin, int end) {
        return isUpright ? QRect(whole.left(), whole.top() + begin, whole.width(), end - begin)
                         : QRect(whole.left() + begin, whole.top(), end - begin, whole.height());
    };
    switch (part) {
    case QStyle::SC_ScrollBarSlider:
        return placed(from, from + handle);
    case QStyle::SC_ScrollBarSubPage:
        return placed(0, from);
    case QStyle::SC_ScrollBarAddPage:
        return placed(from + handle, room);
    case QStyle::SC_ScrollBarGroove:
        return whole;
    default:
        return {};
    }
}

} // namespace

FormStyle::FormStyle() : QProxyStyle(QStringLiteral("fusion")) {
}

QColor FormStyle::mixed(const QColor& from, const QColor& to, double share) {
    const auto mix = [share](float a, float b) { return static_cast<float>(a + (b - a) * share); };
    return QColor::fromRgbF(
        mix(from.redF(), to.redF()), mix(from.greenF(), to.greenF()), mix(from.blueF(), to.blueF()));
}

void FormStyle::dress(QWidget& control) {
    static auto* const style = [] {
        auto* const made = new FormStyle; // NOLINT(cppcoreguidelines-owning-memory): the application owns it
        made->setParent(QCoreApplication::instance());
        return made;
    }();
    if (control.style() != style) {
        control.setStyle(style);
    }
}

void FormStyle::setShowsMnemonic(QPushButton& button, bool shows) {
    button.setProperty(showsMnemonicProperty, shows);
    button.update();
}

QColor FormStyle::ground(const QPalette& palette) {
    const QColor window = palette.color(QPalette::Window);
    return LatencyPalette::isDark(palette) ? mixed(window, Qt::black, 0.2)
                                           : mixed(window, palette.color(QPalette::WindowText), 0.045);
}

QColor FormStyle::card(const QPalette& palette) {
    const double lift = LatencyPalette::isDark(palette) ? 0.035 : 0.75;
    return mixed(palette.color(QPalette::Window), Qt::white, lift);
}

QColor FormStyle::cardEdge(const QPalette& palette) {
    QColor color = palette.color(QPalette::WindowText);
    color.setAlphaF(edgeOpacity);
    return color;
}

void FormStyle::drawCard(QPainter& painter, const QWidget& widget) {
    const double radius = length(&widget, cornerRadius);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(cardEdge(widget.palette()));
    painter.setBrush(card(widget.palette()));
    painter.drawRoundedRect(QRectF(widget.rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.restore();
}

int FormStyle::arrowRoom(const QWidget& field) {
    return ViewStyle(field).length(arrowWidth);
}

void FormStyle::drawPrimitive(
    PrimitiveElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const {
    switch (element) {
    case PE_PanelLineEdit: {
        const auto* const frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        if (frame != nullptr && frame->lineWidth > 0) { // else it is the inside of a field
            drawBox(*painter, *option, fieldFill(*option), length(widget, fieldRadius));
        }
        break;
    }
    case PE_PanelButtonCommand:
        drawBox(*painter, *option, buttonFill(*option), length(widget, fieldRadius));
        break;
    case PE_PanelButtonTool:
        drawFlatButton(*painter, *option, length(widget, fieldRadius) - 2);
        break;
    case PE_PanelMenu:
        painter->setPen(between(option->palette, grooveShare));
        painter->setBrush(card(option->palette));
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        break;
    case PE_FrameMenu:
        break; // the panel has one
    case PE_IndicatorArrowDown:
        drawArrow(
            *painter, QRectF(option->rect).center(), length(widget, arrowHalf), false,
            option->palette.color(QPalette::WindowText));
        break;
    case PE_IndicatorCheckBox:
        drawSwitch(*painter, *option);
        break;
    case PE_FrameLineEdit:
    case PE_FrameFocusRect:
        break; // the edge tells
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void FormStyle::drawComplexControl(
    ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
    const QWidget* widget) const {
    const double half = length(widget, arrowHalf);
    const QColor text = option->palette.color(QPalette::WindowText);
    if (const auto* const slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
        control == CC_Slider && slider != nullptr) {
        drawSlider(
            *painter, *slider, subControlRect(control, option, SC_SliderGroove, widget),
            subControlRect(control, option, SC_SliderHandle, widget));
    } else if (control == CC_ScrollBar && slider != nullptr) {
        drawScrollBar(
            *painter, *slider, subControlRect(control, option, SC_ScrollBarSlider, widget),
            length(widget, scrollBarInset));
    } else if (control == CC_ComboBox) {
        drawBox(*painter, *option, buttonFill(*option), length(widget, fieldRadius));
        const QRectF arrow = subControlRect(control, option, SC_ComboBoxArrow, widget);
        drawArrow(*painter, arrow.center(), half, false, text);
    } else if (const auto* const spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option);
               control == CC_SpinBox && spin != nullptr) {
        drawBox(*painter, *option, fieldFill(*option), length(widget, fieldRadius));
        for (const bool isUp : {true, false}) {
            const QRectF place =
                subControlRect(control, option, isUp ? SC_SpinBoxUp : SC_SpinBoxDown, widget);
            const bool canStep = spin->stepEnabled.testFlag(
                isUp ? QAbstractSpinBox::StepUpEnabled : QAbstractSpinBox::StepDownEnabled);
            const double towardMiddle = place.height() / 10 * (isUp ? 1 : -1);
            drawArrow(
                *painter, place.center() + QPointF(0, towardMiddle), half * 0.8, isUp,
                canStep ? text : between(option->palette, 0.35));
        }
    } else {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    }
}

QRect FormStyle::subControlRect(
    ComplexControl control, const QStyleOptionComplex* option, SubControl part, const QWidget* widget) const {
    const QRect whole = option->rect;
    const int inset = static_cast<int>(length(widget, textInset));
    const int arrow = static_cast<int>(length(widget, arrowWidth));
    const auto placed = [&](QRect rect) { return visualRect(option->direction, whole, rect); };
    const QRect arrows(whole.right() + 1 - arrow, whole.top(), arrow, whole.height());
    if (control == CC_ComboBox && part == SC_ComboBoxArrow) {
        return placed(arrows);
    }
    if (control == CC_ComboBox && part == SC_ComboBoxEditField) {
        return placed(whole.adjusted(inset - 1, 0, -arrow, 0)); // its text begins one pixel inside
    }
    if (control == CC_SpinBox && part == SC_SpinBoxEditField) {
        return placed(whole.adjusted(inset / 2, 2, -arrow, -2));
    }
    if (control == CC_SpinBox && (part == SC_SpinBoxUp || part == SC_SpinBoxDown)) {
        const int middle = whole.height() / 2;
        return placed(
            part == SC_SpinBoxUp ? arrows.adjusted(0, 0, 0, middle - whole.height())
                                 : arrows.adjusted(0, middle, 0, 0));
    }
    const auto* const slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control == CC_ScrollBar && slider != nullptr) {
        return scrollBarPart(*slider, part, static_cast<int>(length(widget, shortestHandle)));
    }
    if (control == CC_Slider && slider != nullptr && part == SC_SliderGroove) {
        const int height = static_cast<int>(length(widget, grooveHeight));
        return {whole.left(), whole.center().y() + 1 - height / 2, whole.width(), height};
    }
    if (control == CC_Slider && slider != nullptr && part == SC_SliderHandle) {
        const int side = static_cast<int>(length(widget, sliderKnob));
        const int from = sliderPositionFromValue(
            slider->minimum, slider->maximum, slider->sliderPosition, whole.width() - side,
            slider->upsideDown);
        return {whole.left() + from, whole.top() + (whole.height() - side) / 2, side, side};
    }
    return QProxyStyle::subControlRect(control, option, part, widget);
}

QRect FormStyle::subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const {
    if (element == SE_LineEditContents) {
        const auto* const frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        const bool isField = frame != nullptr && frame->lineWidth > 0;
        // The line edit itself leaves two pixels free.
        const int inset = isField ? static_cast<int>(length(widget, textInset)) - 2 : 0;
        return option->rect.adjusted(inset, 0, -inset, 0);
    }
    return QProxyStyle::subElementRect(element, option, widget);
}

QSize FormStyle::sizeFromContents(
    ContentsType type, const QStyleOption* option, const QSize& contents, const QWidget* widget) const {
    if (type == CT_ComboBox) {
        const int width = static_cast<int>(length(widget, textInset) + length(widget, arrowWidth));
        return contents + QSize(width, 0);
    }
    return QProxyStyle::sizeFromContents(type, option, contents, widget);
}

int FormStyle::styleHint(
    StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* more) const {
    if (hint == SH_UnderlineShortcut) {
        return widget != nullptr && widget->property(showsMnemonicProperty).toBool() ? 1 : 0;
    }
    return QProxyStyle::styleHint(hint, option, widget, more);
}

int FormStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
    case PM_IndicatorWidth:
        return static_cast<int>(length(widget, switchWidth));
    case PM_IndicatorHeight:
        return static_cast<int>(length(widget, switchHeight));
    case PM_SliderLength:
    case PM_SliderThickness:
    case PM_SliderControlThickness:
        return static_cast<int>(length(widget, sliderKnob));
    case PM_ScrollBarExtent:
        return static_cast<int>(length(widget, scrollBarWidth));
    case PM_ScrollBarSliderMin:
        return static_cast<int>(length(widget, shortestHandle));
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

} // namespace tarnwick
