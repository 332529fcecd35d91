// The terminal as a screen to draw on, through curses.
#pragma once

#include "app/Watch/Canvas.h"

#include <memory>

namespace tarnwick {

/// Takes over the terminal when made and restores it when destroyed. Main thread, one at a time.
class Terminal {
public:
    /// Nothing when standard output is no terminal that can be drawn on.
    [[nodiscard]] static std::unique_ptr<Terminal> open();

    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal();

    [[nodiscard]] ScreenSize size() const;
    /// Follows the window to its present size.
    void resize();
    /// Sends what differs from what is shown. Does nothing while the terminal is paused.
    void draw(const Canvas& canvas);
    /// Forgets what is shown, so that the next drawing sends everything.
    void repaint();
    /// The next key typed; 0 for none.
    [[nodiscard]] int readKey();
    /// Whether the terminal has gone away.
    [[nodiscard]] bool hasHungUp() const;

    /// Whether the terminal shows nothing but ASCII.
    [[nodiscard]] bool isAscii() const { return isAscii_; }

private:
    struct Screen;

    explicit Terminal(std::unique_ptr<Screen> screen);

    std::unique_ptr<Screen> screen_;
    bool isAscii_;
};

} // namespace tarnwick
