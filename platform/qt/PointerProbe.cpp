#include "platform/qt/PointerProbe.h"

#include <QEnterEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <utility>

namespace tarnwick {

/// Over one screen.
class PointerProbe::Window final : public QWidget {
public:
    Window(Wayland::LayerShell& shell, const QScreen& screen, std::function<void(ScreenPoint)> onEnter)
        : QWidget(nullptr, ScreenOverlay::flags(&shell)),
          origin_(screen.geometry().topLeft()),
          onEnter_(std::move(onEnter)) {
        setAttribute(Qt::WA_TranslucentBackground);
        overlay_.emplace(ScreenOverlay::Needs{
            .shell = &shell,
            .window = *this,
            .screen = &screen,
            .cover = Wayland::LayerSurface::Cover::screen,
            .onClosed = [] {}});
    }

protected:
    void enterEvent(QEnterEvent* event) override {
        const QPoint point = origin_ + event->position().toPoint();
        onEnter_({.x = point.x(), .y = point.y()});
    }

private:
    QPoint origin_;
    std::function<void(ScreenPoint)> onEnter_;
    std::optional<ScreenOverlay> overlay_;
};

PointerProbe::PointerProbe(
    RunLoop& loop, Wayland::LayerShell& shell, std::function<void(std::optional<ScreenPoint>)> onFound)
    : loop_(loop), onFound_(std::move(onFound)) {
    for (const QScreen* const screen : QGuiApplication::screens()) {
        windows_.push_back(std::make_unique<Window>(shell, *screen, [this](ScreenPoint at) { end(at); }));
    }
    timer_ = loop_.after(patience, [this] { end(std::nullopt); });
}

PointerProbe::~PointerProbe() = default;

void PointerProbe::end(std::optional<ScreenPoint> found) {
    // Later: an event of one of the windows may have led here.
    timer_ = loop_.after(0, [this, found] {
        windows_.clear();
        const auto tell = std::move(onFound_); // it may destroy this object
        tell(found);
    });
}

} // namespace tarnwick
