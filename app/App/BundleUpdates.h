// What an updater needs from this machine: the adapters behind its ports, and who asks for what.
#pragma once

#include "app/App/UpdateProcess.h"
#include "app/Update/UpdateEngine.h"
#include "app/Update/UpdateMemory.h"
#include "core/Update/BundleInformation.h"
#include "platform/bus/NetworkManagerCost.h"

#include <filesystem>
#include <memory>

namespace tarnwick {

/// Only for a program in a bundle. Main thread.
class BundleUpdates {
public:
    /// They outlive it.
    BundleUpdates(
        RunLoop& loop, BusConnection& systemBus, Preferences& preferences, PreparedUpdate& prepared);

    /// Null where the bundle tells no source of updates. The engine must not outlive this.
    [[nodiscard]] std::unique_ptr<UpdateEngine> makeEngine();

private:
    RunLoop& loop_;
    Preferences& preferences_;
    std::filesystem::path bundle_;
    UpdateProcess work_;
    NetworkManagerCost cost_;
    UpdateMemory memory_;
};

/// Beside the statistics.
[[nodiscard]] std::filesystem::path updateMemoryFile();

} // namespace tarnwick
