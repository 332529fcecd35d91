// Plays the steps of cases/*.txt on a monitor in virtual time. cases/README.md describes the steps.
#pragma once

#include "tests/core/CaseFile.h"
#include "tests/simulation/MonitorWorld.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace tarnwick::simulation {

class MonitorScript : private MonitorWorld {
public:
    MonitorScript() { addSteps(); }

    explicit MonitorScript(const std::shared_ptr<test::TemporaryFolder>& sharedFolder)
        : MonitorWorld(sharedFolder) {
        addSteps();
    }

    /// The answer to a question; empty for a command.
    std::string play(const test::CaseStep& step);

private:
    using Step = test::CaseStep;

    std::string carryOut(const Step& step);
    void addSteps();
    void addSettings();
    void addSurroundings();
    void addCommands();
    void addVerdicts();
    void addPings();
    void addStatistics();

    void setDelays(const Step& step);
    void setLookup(const Step& step);
    void storeFigures(const Step& step);
    /// In seconds from now.
    [[nodiscard]] std::string pingsWithin(double seconds);
    /// In seconds since the start.
    [[nodiscard]] std::string ticksWithin(double seconds);
    [[nodiscard]] std::string sample(std::size_t number) const;
    [[nodiscard]] std::string posted() const;
    [[nodiscard]] std::string saved(const std::string& name) const;

    std::map<std::string, std::function<void(const Step&)>> commands_;
    std::map<std::string, std::function<std::string(const Step&)>> questions_;
    StatsByHost figures_;                   ///< stored by the test
    std::unique_ptr<MonitorScript> second_; ///< another process with the same statistics file
};

} // namespace tarnwick::simulation
