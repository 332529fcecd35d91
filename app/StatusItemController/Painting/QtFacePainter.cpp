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

QColor color(Ink ink) {
    return ink == Ink::light ? QColor(0xf4, 0xf4, 0xf4) : QColor(0x24, 0x24, 0x24);
}

} // namespace

Pixmap QtFacePainter::paint(const StatusFace& face, StatusItem::Form form, int height, Ink ink) const {
    QImage image = mask(face, form, std::max(height, 1));
    {
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), color(ink));
    }
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
