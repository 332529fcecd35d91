// Any statistics file: it loads as something that is saved and loaded again unchanged.
#include "core/Storage/StatsStore.h"
#include "tests/fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarnwick;
    static const fuzz::ScratchFolder folder;
    const StatsStore store{folder.fileOf({data, size})};

    StatsByHost stats = store.load();
    std::erase_if(stats, [](const auto& entry) { return entry.second.isEmpty(); });
    fuzz::require(!store.save(stats, FileStore::Durability::crash));
    fuzz::require(store.load() == stats);
    return 0;
}
