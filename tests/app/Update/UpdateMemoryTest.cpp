// What the updater still knows in its next run.
#include "app/Update/UpdateMemory.h"

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>

namespace tarnwick::test {
namespace {

class UpdateMemoryTest : public testing::Test {
protected:
    [[nodiscard]] UpdateMemory memory() const { return UpdateMemory(file); }

    TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "Tarnwick" / "updates.json";
    std::chrono::sys_seconds time{std::chrono::seconds(1'800'000'000)};
};

TEST_F(UpdateMemoryTest, IsEmptyAtFirst) {
    EXPECT_EQ(memory().lastFeed(), std::nullopt);
    EXPECT_EQ(memory().rolledBack(), std::nullopt);
    EXPECT_FALSE(memory().takeNewsOfRollBack());
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(UpdateMemoryTest, KeepsWhenTheLastFeedWasSigned) {
    memory().setLastFeed(time);

    EXPECT_EQ(memory().lastFeed(), time);
}

TEST_F(UpdateMemoryTest, KeepsTheVersionThatDidNotRun) {
    memory().setLastFeed(time);
    memory().setRolledBack(ReleaseVersion::parse("1.2.3").value());

    EXPECT_EQ(memory().rolledBack(), ReleaseVersion::parse("1.2.3"));
    EXPECT_EQ(memory().lastFeed(), time);
}

TEST_F(UpdateMemoryTest, TellsTheNewsOfItOnce) {
    memory().setRolledBack(ReleaseVersion::parse("1.2.3").value());

    EXPECT_TRUE(memory().takeNewsOfRollBack());
    EXPECT_FALSE(memory().takeNewsOfRollBack());
    EXPECT_NE(memory().rolledBack(), std::nullopt);
}

TEST_F(UpdateMemoryTest, CountsASpoiledFileAsNone) {
    std::filesystem::create_directories(file.parent_path());
    for (const std::string text : {"", "{", "[]", R"({"lastFeed":"x","rolledBack":7,"rolledBackNews":1})"}) {
        std::ofstream(file) << text;

        EXPECT_EQ(memory().lastFeed(), std::nullopt) << text;
        EXPECT_EQ(memory().rolledBack(), std::nullopt) << text;
        EXPECT_FALSE(memory().takeNewsOfRollBack()) << text;
    }
}

} // namespace
} // namespace tarnwick::test
