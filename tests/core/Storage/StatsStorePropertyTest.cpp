// What is saved is what is loaded.
#include "core/Storage/StatsStore.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>

namespace tarnwick {
namespace {

std::int64_t anyCount() {
    return *rc::gen::inRange<std::int64_t>(0, 1'000'000'000'000);
}

/// Any figure a counter may hold, down to its last bit.
double anyMilliseconds() {
    return std::abs(*rc::gen::arbitrary<double>());
}

StatsByHost anyStats() {
    StatsByHost stats;
    const int hosts = *rc::gen::inRange(0, 6);
    for (int number = 0; number < hosts; ++number) {
        const auto host = *rc::gen::container<std::string>(rc::gen::inRange<char>(1, 127));
        stats[host] = {anyCount() + 1,    anyCount(),        anyCount(),
                       anyMilliseconds(), anyMilliseconds(), anyMilliseconds()};
    }
    return stats;
}

TEST(StatsStoreProperty, LoadsExactlyWhatWasSaved) {
    const test::TemporaryFolder folder;
    EXPECT_TRUE(rc::check("saved and loaded", [&folder] {
        const StatsStore store{folder.path() / "stats.json"};
        const StatsByHost stats = anyStats();
        RC_ASSERT(!store.save(stats));
        RC_ASSERT(store.load() == stats);
    }));
}

} // namespace
} // namespace tarnwick
