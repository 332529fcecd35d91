// Changes of the colors that the toolkit draws with.
#pragma once

#include <QObject>

#include <functional>

namespace tarnwick {

/// Calls `onChange` on the main thread after each change. Needs a QGuiApplication, and ends before it.
class PaletteWatch final : public QObject {
public:
    explicit PaletteWatch(std::function<void()> onChange);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::function<void()> onChange_;
};

} // namespace tarnwick
