#include "app/StatusItemController/Painting/QtFacePainter.h"

#include "app/StatusItemController/Painting/MenuBarContent.h"
#include "app/StatusItemController/Painting/MenuBarIcon.h"
#include "app/StatusItemController/Painting/SquareFace.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

TemplateImagePtr icon(const StatusFace& face) {
    switch (face.icon) {
    case StatusFace::Icon::bars:
        return MenuBarIcon::bars(face.activeBars);
    case StatusFace::Icon::failed:
        return MenuBarIcon::failed();
    case StatusFace::Icon::none:
        break;
    }
    return nullptr;
}

QImage blank(int width, int height) {
    QImage image(std::max(width, 1), std::max(height, 1), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

/// The mask in whole pixels, so that nothing of it is blurred, in the middle of the panel's height.
QImage wide(const StatusFace& face, int height) {
    const TemplateImagePtr symbol = icon(face);
    const TemplateImagePtr image =
        face.title ? MenuBarContent::image(symbol, QString::fromStdString(*face.title), face.textSlot)
                   : symbol;
    if (!image) {
        return blank(height, height);
    }
    const double pixels = std::round(height * image->size().height() / MenuBarIcon::panelHeight);
    const double scale = std::max(1.0, pixels) / image->size().height();
    const QImage mask = image->image(scale);
    const int margin = static_cast<int>(std::lround(scale));
    QImage result = blank(mask.width() + 2 * margin, height);
    QPainter painter(&result);
    painter.drawImage(margin, (height - mask.height()) / 2, mask);
    return result;
}

QImage square(const SquareFace::Content& content, int height) {
    QImage result = blank(height, height);
    QPainter painter(&result);
    SquareFace::draw(painter, content, height);
    return result;
}

QImage mask(const StatusFace& face, StatusItem::Form form, int height) {
    switch (form) {
    case StatusItem::Form::wide:
        return wide(face, height);
    case StatusItem::Form::label:
        // The text stands beside it.
        return square(
            {.triangle = face.icon == StatusFace::Icon::failed,
             .bars = face.icon == StatusFace::Icon::bars,
             .activeBars = face.activeBars},
            height);
    case StatusItem::Form::square:
    case StatusItem::Form::automatic:
        break;
    }
    return square(SquareFace::content(face), height);
}

constexpr QRgb lightInk = 0xfff4f4f4;
constexpr QRgb darkInk = 0xff242424;

bool isOnPlate(Ink ink) {
    return ink == Ink::lightOnPlate || ink == Ink::darkOnPlate;
}

QColor color(Ink ink) {
    return ink == Ink::light || ink == Ink::lightOnPlate ? lightInk : darkInk;
}

/// Some of the ground shows through, so that it is hardly seen where the guess was right.
QColor plateColor(Ink ink) {
    constexpr int opacity = 191; // of 255; some trays show light colors darker with each bit less
    QColor color = ink == Ink::darkOnPlate ? QColor(lightInk) : QColor(0x10, 0x10, 0x10);
    color.setAlpha(opacity);
    return color;
}

void tint(QImage& image, const QColor& color) {
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
}

QImage onPlate(const QImage& face, const QColor& color, int margin) {
    constexpr double cornerShare = 0.14; // of the height
    QImage plate = blank(face.width() + 2 * margin, face.height() + 2 * margin);
    const double radius = cornerShare * plate.height();
    QPainter painter(&plate);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(plate.rect(), radius, radius);
    painter.drawImage(margin, margin, face);
    return plate;
}

QImage inked(const StatusFace& face, StatusItem::Form form, int height, Ink ink) {
    const int point = std::max(1, static_cast<int>(std::lround(height / MenuBarIcon::panelHeight)));
    const int margin = isOnPlate(ink) ? point : 0;
    QImage image = mask(face, form, std::max(height - 2 * margin, 1));
    tint(image, color(ink));
    return isOnPlate(ink) ? onPlate(image, plateColor(ink), margin) : image;
}

} // namespace

Pixmap QtFacePainter::paint(const StatusFace& face, StatusItem::Form form, int height, Ink ink) const {
    QImage image = inked(face, form, std::max(height, 1), ink);
    image.convertTo(QImage::Format_ARGB32);
    Pixmap pixmap{.width = image.width(), .height = image.height()};
    pixmap.pixels.reserve(static_cast<std::size_t>(image.width()) * static_cast<std::size_t>(image.height()));
    for (int y = 0; y < image.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        pixmap.pixels.insert(pixmap.pixels.end(), row, row + image.width());
    }
    return pixmap;
}

double QtFacePainter::textWidth(const std::string& text) const {
    return MenuBarContent::lineWidth(QString::fromStdString(text));
}

} // namespace tarnwick
