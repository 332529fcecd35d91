// What the outages window shows, brought up to date while it is open.
#pragma once

#include "app/Observation/Observation.h"
#include "app/OutagesView/Model/OutagesExport.h"
#include "app/OutagesView/Model/OutagesPage.h"
#include "app/Reading/HistoryChart.h"
#include "app/Reading/Reading.h"
#include "core/RunLoop.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// Reads the history when it is opened, each minute, more often while an outage lasts, and when the
/// connection goes bad or becomes good. While it is closed it holds nothing and does nothing. Main thread.
class OutagesModel {
public:
    /// All of it outlives the model.
    struct Needs {
        RunLoop& loop;
        const Observed<Reading>& reading;
        std::function<bool()> keepsHistory; ///< reads an observed setting
        /// Of the present host. It may take some milliseconds, since it reads the disk.
        std::function<History(const Span&)> read;
        std::string version; ///< of the program, for reports
        UtcOffset offset = systemUtcOffset;
    };

    explicit OutagesModel(Needs needs) : needs_(std::move(needs)) {}

    OutagesModel(const OutagesModel&) = delete;
    OutagesModel& operator=(const OutagesModel&) = delete;

    void open();
    void close();

    [[nodiscard]] bool isOpen() const { return following_ != nullptr; }

    // While it is closed, all of this is empty.

    [[nodiscard]] const OutagesPage& page() const { return page_; }

    /// Why nothing is known, or since when something is.
    [[nodiscard]] const std::string& status() const { return status_; }

    /// Of the page; today's at first. Today is followed over midnight, another day stays chosen.
    [[nodiscard]] std::size_t chosenDay() const { return chosenDay_; }

    /// Ignored if there is no such day.
    void chooseDay(std::size_t day);

    // Of the chosen day:
    [[nodiscard]] std::vector<OutagesFigure> figures() const;
    /// By half hours, from midnight to midnight.
    [[nodiscard]] HistoryChart::Chart chart() const;

    [[nodiscard]] const History& history() const { return history_; }

    /// The report of all days as such a file.
    [[nodiscard]] std::string exported(ExportFormat format) const;
    /// For a file of today, without its ending: "tarnwick-2026-11-23".
    [[nodiscard]] std::string exportName() const;

    /// Set by the owner. Called when anything but the chosen day has changed.
    std::function<void()> onChange;

private:
    /// Seconds between two looks at the history: in which nothing happens, and while an outage or a poor time
    /// lasts, whose length is shown.
    static constexpr double rereadInterval = 60;
    static constexpr double lastingInterval = 5;
    static constexpr double rereadTolerance = 0.08; ///< of the interval

    /// What tells that the history has other entries, or is another one.
    struct State {
        std::string host{};
        bool keepsHistory = true;
        bool isDown = false;
        std::optional<Blame> blame{};
        std::string problem{};

        friend bool operator==(const State&, const State&) = default;
    };

    [[nodiscard]] State presentState() const;
    [[nodiscard]] HistoryTime wallNow() const;
    /// Runs at each change of the reading, and reads the history only at those that matter.
    void follow();
    void reread();
    /// Again and again.
    void rereadLater();
    /// Whether an episode does.
    [[nodiscard]] bool lasts() const;

    Needs needs_;
    State state_;
    History history_;
    OutagesPage page_;
    std::string status_;
    std::size_t chosenDay_ = 0;
    double interval_ = 0;                   ///< of `rereading_`
    RunLoop::Handle rereading_;             ///< while it is open
    std::unique_ptr<RenderLoop> following_; ///< while it is open
};

} // namespace tarnwick
