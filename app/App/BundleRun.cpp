#include "app/App/BundleRun.h"

#include "app/App/BundleUpdates.h"
#include "platform/bundle/TrialGuard.h"
#include "platform/linux/RunningProgram.h"

#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace tarnwick {

namespace {

void rememberRollBack(const ReleaseVersion& failed, const std::filesystem::path& bundle) {
    UpdateMemory memory(updateMemoryFile());
    memory.setRolledBack(failed, versionOf(bundle).value_or(ReleaseVersion()));
}

} // namespace

BundleRun::BundleRun(std::filesystem::path bundle, const std::vector<std::string>& arguments)
    : folder_(std::move(bundle)), trial_(folder_) {
    if (const auto& failed = trial_.broughtBackFrom()) {
        rememberRollBack(*failed, folder());
        becomeProgram(programOf(folder()), arguments);
    }
}

void BundleRun::endWell() {
    trial_.endWell();
}

bool BundleRun::exchange() {
    endWell();
    const auto problem = exchangeForPrepared(folder_);
    if (problem) {
        UpdateMemory(updateMemoryFile()).setNews(*problem);
    }
    return !problem;
}

void BundleRun::endWithUpdate() {
    static_cast<void>(exchange());
}

void BundleRun::restartWithUpdate(const std::vector<std::string>& arguments) {
    if (!exchange()) {
        return;
    }
    const auto failed = startOnTrial(folder_, arguments);
    if (!failed) {
        ::_exit(EXIT_SUCCESS); // the process that was left behind has nothing more to do
    }
    rememberRollBack(*failed, folder());
    becomeProgram(programOf(folder()), arguments);
}

} // namespace tarnwick
