// The lines of the header above the chart.
#include "app/Reading/HeaderText.h"

#include "tests/app/WatchedMonitor.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

class HeaderTextTest : public testing::Test, protected WatchedMonitor {};

} // namespace

TEST_F(HeaderTextTest, BeforeTheFirstReplyItIsConnectingWithADashAndNoLoss) {
    fallSilent();
    watchFor(0.5);

    EXPECT_EQ(HeaderText::latency(monitor), "–");
    EXPECT_EQ(HeaderText::loss(monitor), std::nullopt);
    EXPECT_EQ(monitor.qualityTitle(), "Connecting…");
    EXPECT_EQ(monitor.qualityTone(), Monitor::QualityTone::neutral);
    EXPECT_EQ(monitor.bars(), 0);
}

TEST_F(HeaderTextTest, TheLatencyIsInWholeMilliseconds) {
    answerAfter(0.0426);
    watchFor(2.5);

    EXPECT_EQ(HeaderText::latency(monitor), "43 ms");
}

TEST_F(HeaderTextTest, AnAddressTypedAsTheHostStandsAlone) {
    watchFor(2.5);

    EXPECT_EQ(HeaderText::hostLine(monitor), "1.1.1.1");
}

TEST_F(HeaderTextTest, ANameIsFollowedByItsAddress) {
    prefs.setHostname("example.org");
    resolve("example.org", "192.0.2.7");
    watchFor(2.5);

    EXPECT_EQ(HeaderText::hostLine(monitor), "example.org · 192.0.2.7");
}

TEST_F(HeaderTextTest, ANameWithoutAnAddressYetStandsAlone) {
    prefs.setHostname("example.org");
    network.setHangingHost("example.org");
    watchFor(2.5);

    EXPECT_EQ(HeaderText::hostLine(monitor), "example.org");
}

TEST_F(HeaderTextTest, WithoutLossItIsNonePercent) {
    watchFor(10.5);

    EXPECT_EQ(HeaderText::loss(monitor), "0% loss");
}

TEST_F(HeaderTextTest, TheLossIsRoundedToWholePercent) {
    int sent = 0;
    network.setBehavior([&](const auto&) { return simulation::Answer{.copies = sent++ % 3 == 0 ? 0 : 1}; });
    watchFor(20.5);
    ASSERT_NEAR(monitor.lossPercent(), 30, 10);

    EXPECT_EQ(HeaderText::loss(monitor), std::to_string(std::lround(monitor.lossPercent())) + "% loss");
}

TEST_F(HeaderTextTest, WhileDownItSaysSoWithTheReasonAndWithoutLoss) {
    watchFor(5);
    fallSilent();
    ASSERT_TRUE(waitUntilDown());

    EXPECT_EQ(HeaderText::latency(monitor), "Down");
    EXPECT_EQ(HeaderText::hostLine(monitor), monitor.downReasonText());
    EXPECT_EQ(HeaderText::hostLine(monitor), "No replies for 8 s");
    EXPECT_EQ(HeaderText::loss(monitor), std::nullopt);
}

} // namespace tarnwick
