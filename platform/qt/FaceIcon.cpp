#include "platform/qt/FaceIcon.h"

#include <QIconEngine>
#include <QImage>
#include <QPainter>
#include <QPixmap>

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

QImage toImage(const Pixmap& pixmap) {
    const qsizetype bytesPerRow = qsizetype{pixmap.width} * qsizetype{sizeof(std::uint32_t)};
    const QImage borrowed(
        reinterpret_cast<const uchar*>(pixmap.pixels.data()), pixmap.width, pixmap.height, bytesPerRow,
        QImage::Format_ARGB32);
    return borrowed.copy();
}

class FaceIconEngine final : public QIconEngine {
public:
    FaceIconEngine(StatusFace face, const FacePainter& painter, Ink ink)
        : face_(std::move(face)), painter_(painter), ink_(ink) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        const int side = std::min(rect.width(), rect.height());
        QRect square(0, 0, side, side);
        square.moveCenter(rect.center());
        const double scale = painter->device()->devicePixelRatio();
        painter->drawImage(square, image(static_cast<int>(std::lround(side * scale))));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        return QPixmap::fromImage(image(std::min(size.width(), size.height())));
    }

    /// Some trays choose one of these sizes before they ask for a pixmap.
    QList<QSize> availableSizes(QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        return {QSize(16, 16), QSize(22, 22), QSize(24, 24), QSize(32, 32), QSize(48, 48), QSize(64, 64)};
    }

    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the toolkit's way of handing over
    [[nodiscard]] QIconEngine* clone() const override { return new FaceIconEngine(face_, painter_, ink_); }

private:
    [[nodiscard]] QImage image(int side) const {
        return side > 0 ? toImage(painter_.paint(face_, StatusItem::Form::square, side, ink_)) : QImage();
    }

    StatusFace face_;
    const FacePainter& painter_;
    Ink ink_;
};

} // namespace

QIcon faceIcon(const StatusFace& face, const FacePainter& painter, Ink ink) {
    return QIcon(new FaceIconEngine(face, painter, ink));
}

} // namespace tarnwick
