#include "app/App/BundleUpdates.h"

#include "core/Storage/StatsStore.h"
#include "platform/linux/SystemName.h"

#include <cstdio>
#include <random>
#include <utility>

namespace tarnwick {

namespace {

double randomPart() {
    std::random_device device;
    return std::uniform_real_distribution<double>(0, 1)(device);
}

} // namespace

std::filesystem::path updateMemoryFile() {
    return StatsStore::supportDirectory() / "Tarnwick" / "updates.json";
}

BundleUpdates::BundleUpdates(
    RunLoop& loop, BusConnection& systemBus, Preferences& preferences, PreparedUpdate& prepared)
    : loop_(loop),
      preferences_(preferences),
      bundle_(prepared.folder().bundle()),
      work_(prepared),
      cost_(systemBus),
      memory_(updateMemoryFile()) {
}

std::unique_ptr<UpdateEngine> BundleUpdates::makeEngine() {
    const auto read = informationOf(bundle_);
    if (const auto* const mistake = std::get_if<DocumentMistake>(&read)) {
        std::fprintf(stderr, "tarnwick: %s: %s\n", bundleInformationName, mistake->text.c_str());
    }
    const auto* const information = std::get_if<BundleInformation>(&read);
    if (information == nullptr || !information->source) {
        return nullptr;
    }
    const SystemName system = systemName();
    return std::make_unique<UpdateEngine>(UpdateEngine::Needs{
        .loop = loop_,
        .work = work_,
        .cost = cost_,
        .preferences = preferences_,
        .memory = memory_,
        .running = information->version,
        .channel = information->channel,
        .checkInterval = information->checkInterval,
        .feedAddress = information->source->feedAddress,
        .machine = system.machine,
        .system = kernelVersion(system.release).value_or(ReleaseVersion()),
        .random = randomPart});
}

} // namespace tarnwick
