// The three ways in which the terminal program shows the model: a screen, plain lines, JSON lines.
#pragma once

#include "app/Monitor/Monitor.h"
#include "app/Reading/Format.h"
#include "app/Reading/LossGates.h"
#include "app/Watch/LineWriter.h"
#include "app/Watch/Terminal.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tarnwick {

class Presentation {
public:
    /// Ends the program; with what has failed, or with an empty text when all is as it should be.
    using Quit = std::function<void(const std::string& problem)>;

    Presentation() = default;
    Presentation(const Presentation&) = delete;
    Presentation& operator=(const Presentation&) = delete;
    virtual ~Presentation() = default;

    /// Once after the start and then after every tick.
    virtual void show() = 0;
    /// What the user should know or do at present; empty when there is nothing.
    virtual void setNotes(const std::vector<std::string>& notes) = 0;

    virtual void windowResized() {}
};

/// Notes as lines on standard error, beside the lines that a program may be reading. Each is told once, until
/// it has ceased to hold.
class NoteLines {
public:
    void set(const std::vector<std::string>& notes);

private:
    std::vector<std::string> told_;
};

/// A line of text each time, on standard output.
class LinePresentation : public Presentation {
public:
    /// `quit` is called when nobody reads any more, or nothing can be written.
    LinePresentation(RunLoop& loop, const Monitor& monitor, Quit quit);

    void show() final;
    void setNotes(const std::vector<std::string>& notes) final;

protected:
    /// The present state, with a line break at its end.
    [[nodiscard]] virtual std::string line() = 0;

    [[nodiscard]] const RunLoop& loop() const { return loop_; }

    [[nodiscard]] const Monitor& monitor() const { return monitor_; }

private:
    RunLoop& loop_;
    const Monitor& monitor_;
    Quit quit_;
    LineWriter output_;
    NoteLines noteLines_;
};

/// One JSON object a line.
class JsonPresentation final : public LinePresentation {
public:
    using LinePresentation::LinePresentation;

private:
    [[nodiscard]] std::string line() override;

    LossGates gates_;
};

/// Time, quality, latency, loss and host in columns.
class PlainPresentation final : public LinePresentation {
public:
    using LinePresentation::LinePresentation;

private:
    [[nodiscard]] std::string line() override;
};

/// The whole terminal, redrawn in place.
class ScreenPresentation final : public Presentation {
public:
    ScreenPresentation(RunLoop& loop, const Monitor& monitor, std::unique_ptr<Terminal> terminal, Quit quit);

    void show() override;
    void setNotes(const std::vector<std::string>& notes) override;
    void windowResized() override;

private:
    void draw();
    void readKeys();

    RunLoop& loop_;
    const Monitor& monitor_;
    std::unique_ptr<Terminal> terminal_;
    Quit quit_;
    Format::Grouping grouping_ = Format::Grouping::ofUser();
    std::vector<std::string> notes_;
    RunLoop::Handle keyboard_;
    std::unique_ptr<RenderLoop> renderLoop_; ///< shows a change at once, not only at the next tick
};

} // namespace tarnwick
