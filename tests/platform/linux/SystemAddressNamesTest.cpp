// Names of addresses: questions in virtual time, and some to the real resolver.
#include "platform/linux/SystemAddressNames.h"

#include "tests/simulation/VirtualRunLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {
namespace {

class SystemAddressNamesTest : public testing::Test {
protected:
    void ask(const std::string& address) {
        names_->ask(address, [this](const std::string& name) { answers_.push_back(name); });
    }

    simulation::VirtualRunLoop loop_;
    std::vector<std::string> answers_;
    std::optional<SystemAddressNames> names_{
        std::in_place, loop_, [](const std::string& address) { return "name of " + address; }};
};

TEST_F(SystemAddressNamesTest, AnswersComeSoonButNotFromInsideTheQuestion) {
    ask("a");
    ask("b");
    EXPECT_TRUE(answers_.empty());

    loop_.runPending();

    EXPECT_THAT(answers_, testing::ElementsAre("name of a", "name of b"));
}

TEST_F(SystemAddressNamesTest, WithoutAThreadThereIsNoName) {
    loop_.hasThreads = false;
    ask("a");
    loop_.runPending();

    EXPECT_THAT(answers_, testing::ElementsAre(""));
}

TEST_F(SystemAddressNamesTest, NobodyIsAnsweredAfterItsEnd) {
    ask("a");
    names_.reset();
    loop_.runPending();

    EXPECT_TRUE(answers_.empty());
}

TEST(SystemResolver, KnowsTheNameOfThisMachine) {
    EXPECT_EQ(SystemAddressNames::lookUp("127.0.0.1"), "localhost");
}

TEST(SystemResolver, KnowsNoNameOfWhatIsNoAddress) {
    EXPECT_EQ(SystemAddressNames::lookUp("localhost"), "");
    EXPECT_EQ(SystemAddressNames::lookUp(""), "");
}

} // namespace
} // namespace tarnwick
