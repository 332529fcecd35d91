// Long runs of pings written down as data: what is sent, what comes back, and the figures expected on the
// way.
#pragma once

#include "core/PingLedger.h"
#include "core/QualityScorer.h"

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tarnwick::test {

/// Reads a script and plays it against a ledger and the scorer the way their owner uses them: one evaluation
/// a second, lost pings settled by it, replies settled as they come. `data/README.md` tells the language.
class StatisticsScript {
public:
    explicit StatisticsScript(const std::filesystem::path& file);

    /// One line for each expectation that is not met, and for each line of the file that makes no sense.
    [[nodiscard]] std::vector<std::string> play();

    /// So that a file without any is noticed.
    [[nodiscard]] int expectationCount() const { return expectationCount_; }

private:
    /// Seconds of the script, then order of happening within one moment: replies, sends, the rest in file
    /// order.
    struct Moment {
        double at;
        int rank;
        std::size_t line;

        friend auto operator<=>(const Moment&, const Moment&) = default;
    };

    void readLine(std::size_t line, const std::string& text);
    void readSettings(std::istream& words);
    void readPings(std::size_t line, std::istream& words);
    void readCommand(std::size_t line, double at, std::istream& words);
    void readExpectations(std::size_t line, double at, std::istream& words);
    void addStep(Moment moment, std::function<void()> act);
    void addPing(std::size_t line, double sent, std::optional<double> roundTripMs, bool counted);
    void addTicks();
    void sendPing(std::uint64_t id, double now, bool counted);
    void receiveReply(std::uint64_t id, double now, double roundTripMs);
    void tick(double now);
    void expect(std::size_t line, const std::string& name, const std::string& value);
    [[nodiscard]] std::string figure(const std::string& name) const;
    void complain(std::size_t line, const std::string& what);

    ScoringConfig config_ = ScoringConfig::original(100, 4, 1);
    PingLedger ledger_;
    std::vector<PendingPing> pings_;
    Evaluation evaluation_;
    std::uint64_t nextId_ = 65'000; ///< so that long scripts pass the 16-bit boundary
    std::multimap<Moment, std::function<void()>> steps_;
    std::vector<std::string> complaints_;
    int expectationCount_ = 0;
};

} // namespace tarnwick::test
