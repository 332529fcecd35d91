// The three forms in which the terminal program shows the reading: a screen, plain lines, JSON lines.
#pragma once

#include "app/Observation/Observation.h"
#include "app/Reading/Format.h"
#include "app/Reading/LossGates.h"
#include "app/Reading/PastCharts.h"
#include "app/Reading/Reading.h"
#include "app/Watch/LineWriter.h"
#include "app/Watch/Terminal.h"

#include <functional>
#include <memory>
#include <string>

namespace tarnwick {

class Presentation {
public:
    /// Ends the program, because of `problem` unless that is empty.
    using Quit = std::function<void(const std::string& problem)>;

    Presentation() = default;
    Presentation(const Presentation&) = delete;
    Presentation& operator=(const Presentation&) = delete;
    virtual ~Presentation() = default;

    /// Once after the start and then after every tick. `judgedAt` is the monotonic time of the tick.
    virtual void show(double judgedAt) = 0;

    virtual void windowResized() {}
};

/// The reading's notices as lines on standard error, apart from the output that another program may be
/// reading. Each is written once, and again only if it comes back.
class NoticeLines {
public:
    NoticeLines(RunLoop& loop, const Observed<Reading>& reading);

private:
    void tell(const Notices& notices);

    LineWriter output_;
    Notices told_;
    RenderLoop renderLoop_;
};

/// A line of text each time, on standard output.
class LinePresentation : public Presentation {
public:
    /// `quit` is called when the reader has gone, or nothing can be written.
    LinePresentation(RunLoop& loop, const Observed<Reading>& reading, Quit quit);

    void show(double judgedAt) final;

protected:
    /// The present state, with a line break at its end.
    [[nodiscard]] virtual std::string line(double judgedAt) = 0;

    [[nodiscard]] const RunLoop& loop() const { return loop_; }

    [[nodiscard]] const Reading& reading() const { return reading_.get(); }

private:
    RunLoop& loop_;
    const Observed<Reading>& reading_;
    Quit quit_;
    LineWriter output_;
    NoticeLines noticeLines_;
};

/// One JSON object a line.
class JsonPresentation final : public LinePresentation {
public:
    using LinePresentation::LinePresentation;

private:
    [[nodiscard]] std::string line(double judgedAt) override;

    LossGates gates_;
};

/// Time, quality, latency, loss and host in columns.
class PlainPresentation final : public LinePresentation {
public:
    using LinePresentation::LinePresentation;

private:
    [[nodiscard]] std::string line(double judgedAt) override;
};

/// The whole terminal, redrawn in place. Keys choose how far the chart reaches back.
class ScreenPresentation final : public Presentation {
public:
    /// What keys do.
    struct Commands {
        Quit quit;
        std::function<void()> togglePause;
    };

    ScreenPresentation(
        RunLoop& loop, const Observed<Reading>& reading, PastSource past, std::unique_ptr<Terminal> terminal,
        Commands commands);

    void show(double judgedAt) override;
    void windowResized() override;

private:
    void draw();
    /// Draws a new verdict, answer or notice, and the ends of a pause, between ticks. Everything else has
    /// time until the next tick.
    void drawNews();
    void readKeys();
    void takeKey(int key);
    /// Null while that of five minutes is chosen.
    [[nodiscard]] const HistoryChart::Chart* pastChart();

    RunLoop& loop_;
    const Observed<Reading>& reading_;
    PastCharts past_;
    std::unique_ptr<Terminal> terminal_;
    Commands commands_;
    Format::Grouping grouping_ = Format::Grouping::ofUser();
    ConnectionWatchdog::Status drawnStatus_ = ConnectionWatchdog::Status::starting;
    std::optional<double> drawnLatency_;
    std::optional<RunLoop::WallTime> drawnPause_;
    Notices drawnNotices_;
    const bool readsKeys_;
    RunLoop::Handle keyboard_;
    RenderLoop renderLoop_;
};

} // namespace tarnwick
