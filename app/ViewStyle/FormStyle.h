// How the form's controls look: flat, with one thin edge, in every desktop.
#pragma once

#include <QColor>
#include <QProxyStyle>

class QPainter;
class QPushButton;

namespace tarnwick {

/// Draws fields, pickers, buttons, switches and sliders from the palette and in sizes that go with the font.
class FormStyle final : public QProxyStyle {
public:
    /// The color between two others; a share of 1 gives `to`.
    [[nodiscard]] static QColor mixed(const QColor& from, const QColor& to, double share);

    /// Gives a control this style. The style lives as long as the application.
    static void dress(QWidget& control);

    /// Underlines the letter behind the `&` in a button's text.
    static void setShowsMnemonic(QPushButton& button, bool shows);

    /// The form's ground, which its cards stand out from.
    [[nodiscard]] static QColor ground(const QPalette& palette);
    [[nodiscard]] static QColor card(const QPalette& palette);
    [[nodiscard]] static QColor cardEdge(const QPalette& palette);
    /// All of a widget as a card.
    static void drawCard(QPainter& painter, const QWidget& widget);

    /// The width of the part of a field that holds its arrow.
    [[nodiscard]] static int arrowRoom(const QWidget& field);

    void drawPrimitive(
        PrimitiveElement element, const QStyleOption* option, QPainter* painter,
        const QWidget* widget) const override;
    void drawComplexControl(
        ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
        const QWidget* widget) const override;
    [[nodiscard]] QRect subControlRect(
        ComplexControl control, const QStyleOptionComplex* option, SubControl part,
        const QWidget* widget) const override;
    [[nodiscard]] QRect subElementRect(
        SubElement element, const QStyleOption* option, const QWidget* widget) const override;
    [[nodiscard]] QSize sizeFromContents(
        ContentsType type, const QStyleOption* option, const QSize& contents,
        const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* more)
        const override;
    [[nodiscard]] int pixelMetric(
        PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;

private:
    FormStyle();
};

} // namespace tarnwick
