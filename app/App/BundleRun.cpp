#include "app/App/BundleRun.h"

#include "app/App/BundleUpdates.h"
#include "platform/bundle/TrialGuard.h"
#include "platform/linux/RunningProgram.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace tarnwick {

BundleRun::BundleRun(std::filesystem::path bundle, const std::vector<std::string>& arguments)
    : folder_(std::move(bundle)), trial_(folder_), update_(folder_) {
    if (const auto& failed = trial_.broughtBackFrom()) {
        goBackFrom(*failed, arguments);
    }
    // The run that had made it ready has not come to its end: a display or the power has gone.
    if (!trial_.isOn() && !update_.hold() && exchange()) {
        startNewVersion(arguments);
    }
}

void BundleRun::forgetUpdates(RunLoop& loop) {
    trial_.pass(loop);
    update_.discard();
}

void BundleRun::end() {
    trial_.endWell();
    if (update_.isHeld()) {
        static_cast<void>(exchange());
    }
}

void BundleRun::endForRestart(const std::vector<std::string>& arguments) {
    trial_.endWell();
    if (update_.isHeld() && exchange()) {
        startNewVersion(arguments);
    }
}

bool BundleRun::exchange() {
    const auto problem = update_.exchange();
    if (problem) {
        UpdateMemory(updateMemoryFile()).setNews(*problem);
    }
    return !problem;
}

void BundleRun::startNewVersion(const std::vector<std::string>& arguments) {
    if (const auto failed = startOnTrial(folder_, arguments)) {
        goBackFrom(*failed, arguments);
    }
    ::_exit(EXIT_SUCCESS); // the process that was left behind has nothing more to do
}

void BundleRun::goBackFrom(const ReleaseVersion& failed, const std::vector<std::string>& arguments) const {
    UpdateMemory(updateMemoryFile()).setRolledBack(failed, versionOf(folder()).value_or(ReleaseVersion()));
    becomeProgram(programOf(folder()), arguments);
    // This code is that of the version that failed, or in its folder.
    std::fputs("tarnwick: the version before could not be started\n", stderr);
    ::_exit(EXIT_FAILURE);
}

} // namespace tarnwick
