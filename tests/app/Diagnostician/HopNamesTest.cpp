// Which hops' names are asked for, and when.
#include "app/Diagnostician/HopNames.h"

#include "tests/app/Diagnostician/FakeAddressNames.h"
#include "tests/simulation/VirtualRunLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarnwick {
namespace {

using testing::ElementsAre;

class HopNamesTest : public testing::Test {
protected:
    HopNamesTest() { names.names = {{"192.0.2.1", "router.example"}, {"198.51.100.1", "core.example"}}; }

    /// Of the path, as it is filled now.
    std::vector<std::string> filled() {
        hopNames.fill(path);
        std::vector<std::string> all;
        for (const HopEvidence& hop : path) {
            all.push_back(hop.name);
        }
        return all;
    }

    /// Until nothing is left to ask.
    void fillOften() {
        for (int second = 0; second < 10; ++second) {
            hopNames.fill(path);
            loop.advance(1);
        }
    }

    simulation::VirtualRunLoop loop;
    simulation::FakeAddressNames names{loop};
    HopNames hopNames{names};
    std::vector<HopEvidence> path{
        {.address = "192.0.2.1"}, {}, {.address = "198.51.100.1"}, {.address = "203.0.113.9"}};
};

TEST_F(HopNamesTest, OneIsAskedForAfterTheOther) {
    EXPECT_THAT(filled(), ElementsAre("", "", "", ""));
    EXPECT_THAT(filled(), ElementsAre("", "", "", ""));
    EXPECT_THAT(names.asked, ElementsAre("192.0.2.1"));

    loop.advance(1);
    EXPECT_THAT(filled(), ElementsAre("router.example", "", "", ""));
    EXPECT_THAT(names.asked, ElementsAre("192.0.2.1", "198.51.100.1"));
}

TEST_F(HopNamesTest, EachIsAskedForOnce) {
    fillOften();

    EXPECT_THAT(filled(), ElementsAre("router.example", "", "core.example", ""));
    EXPECT_THAT(names.asked, ElementsAre("192.0.2.1", "198.51.100.1", "203.0.113.9"));
}

TEST_F(HopNamesTest, WhoHasNoNameIsAskedForAgainInTheNextTrouble) {
    fillOften();
    hopNames.retryUnknown();
    fillOften();

    EXPECT_THAT(names.asked, ElementsAre("192.0.2.1", "198.51.100.1", "203.0.113.9", "203.0.113.9"));
}

TEST_F(HopNamesTest, AnotherNetworkBeginsFromNothing) {
    fillOften();
    names.names["192.0.2.1"] = "gateway.example";
    hopNames.forget();
    path[0].name.clear();
    fillOften();

    EXPECT_EQ(filled()[0], "gateway.example");
}

TEST_F(HopNamesTest, TheAnswerOfTheNetworkBeforeIsDropped) {
    hopNames.fill(path);
    names.names["192.0.2.1"] = "gateway.example";
    hopNames.forget();
    fillOften();

    EXPECT_EQ(filled()[0], "gateway.example");
    EXPECT_THAT(names.asked, ElementsAre("192.0.2.1", "192.0.2.1", "198.51.100.1", "203.0.113.9"));
}

} // namespace
} // namespace tarnwick
