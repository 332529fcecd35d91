// The signal and the rate of Wi-Fi: the kernel's two ways to tell the one, and its way to tell the other.
#include "platform/linux/WirelessLink.h"

#include "platform/linux/NetlinkConversation.h"
#include "tests/platform/linux/NetlinkBytes.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <linux/genetlink.h>
#include <linux/nl80211.h>
#include <optional>
#include <string>

namespace tarnwick {

namespace {

using test::attribute;
using test::bytesOf;
using test::Content;
using test::operator+;

Content figure(unsigned short type, int dBm) {
    return attribute(type, bytesOf(static_cast<std::int8_t>(dBm)));
}

WirelessLink::Figures figuresIn(const Content& figures) {
    return WirelessLink::parseStation(
        bytesOf(genlmsghdr{}) + attribute(NL80211_ATTR_MAC, Content(6))
        + attribute(NL80211_ATTR_STA_INFO | NLA_F_NESTED, figures));
}

std::optional<int> signalOf(const Content& figures) {
    return figuresIn(figures).signalDbm;
}

template<class Units>
Content rate(unsigned short type, Units units) {
    return attribute(type, bytesOf(units));
}

std::optional<double> rateOf(const Content& rates) {
    return figuresIn(attribute(NL80211_STA_INFO_TX_BITRATE | NLA_F_NESTED, rates)).rateMbit;
}

std::optional<int> signalInTable(const std::string& lines, const std::string& name = "wlan0") {
    const test::TemporaryFolder folder;
    test::writeFile(
        folder.path() / "wireless",
        "Inter-| sta-|   Quality        |   Discarded packets               | Missed | WE\n"
        " face | tus | link level noise |  nwid  crypt   frag  retry   misc | beacon | 22\n"
            + lines);
    return WirelessLink::fromTable(folder.path() / "wireless", name);
}

} // namespace

TEST(WirelessLink, TheAverageCountsBeforeTheLatest) {
    EXPECT_EQ(signalOf(figure(NL80211_STA_INFO_SIGNAL, -60)), -60);
    EXPECT_EQ(signalOf(figure(NL80211_STA_INFO_SIGNAL_AVG, -82) + figure(NL80211_STA_INFO_SIGNAL, -60)), -82);
}

TEST(WirelessLink, WithoutAFigureThereIsNone) {
    EXPECT_EQ(signalOf({}), std::nullopt);
    EXPECT_EQ(signalOf(figure(NL80211_STA_INFO_TX_FAILED, -60)), std::nullopt);
    EXPECT_EQ(signalOf(figure(NL80211_STA_INFO_SIGNAL, 0)), std::nullopt);
    EXPECT_EQ(WirelessLink::parseStation(bytesOf(genlmsghdr{})), WirelessLink::Figures{});
}

TEST(WirelessLink, AnAnswerThatIsCutOffTellsNone) {
    const Content whole =
        bytesOf(genlmsghdr{}) + attribute(NL80211_ATTR_STA_INFO, figure(NL80211_STA_INFO_SIGNAL, -60));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_EQ(
            WirelessLink::parseStation(Content(whole.begin(), whole.begin() + static_cast<long>(size))),
            WirelessLink::Figures{})
            << size;
    }
    EXPECT_EQ(WirelessLink::parseStation(whole).signalDbm, -60);
    EXPECT_EQ(signalOf(attribute(NL80211_STA_INFO_SIGNAL, {})), std::nullopt);
}

TEST(WirelessLink, TheRateIsThatAtWhichItSends) {
    EXPECT_EQ(rateOf(rate(NL80211_RATE_INFO_BITRATE, std::uint16_t{60})), 6);
    EXPECT_EQ(rateOf(rate(NL80211_RATE_INFO_BITRATE, std::uint16_t{55})), 5.5);
    EXPECT_EQ(
        figuresIn(attribute(
                      NL80211_STA_INFO_RX_BITRATE | NLA_F_NESTED,
                      rate(NL80211_RATE_INFO_BITRATE, std::uint16_t{60})))
            .rateMbit,
        std::nullopt);
}

TEST(WirelessLink, TheLargerFigureOfARateCounts) {
    const Content larger = rate(NL80211_RATE_INFO_BITRATE32, std::uint32_t{96'076});
    const Content older = rate(NL80211_RATE_INFO_BITRATE, std::uint16_t{60});

    EXPECT_EQ(rateOf(older + larger), 9607.6);
    EXPECT_EQ(rateOf(larger + older), 9607.6);
}

TEST(WirelessLink, ARateThatIsNotKnownIsNone) {
    EXPECT_EQ(rateOf({}), std::nullopt);
    EXPECT_EQ(rateOf(rate(NL80211_RATE_INFO_BITRATE, std::uint16_t{0})), std::nullopt);
    EXPECT_EQ(rateOf(rate(NL80211_RATE_INFO_BITRATE32, std::uint16_t{60})), std::nullopt);
    EXPECT_EQ(rateOf(rate(NL80211_RATE_INFO_MCS, std::uint16_t{60})), std::nullopt);
}

TEST(WirelessLink, TheFamilyOfItsMessagesHasANumber) {
    EXPECT_EQ(
        WirelessLink::parseFamily(
            bytesOf(genlmsghdr{}) + attribute(CTRL_ATTR_VERSION, Content(4))
            + attribute(CTRL_ATTR_FAMILY_ID, bytesOf(std::uint16_t{37}))),
        37);
    EXPECT_EQ(
        WirelessLink::parseFamily(bytesOf(genlmsghdr{}) + attribute(CTRL_ATTR_FAMILY_ID, Content(1))),
        std::nullopt);
}

TEST(WirelessLink, TheKernelNumbersItsFamilies) {
    NetlinkConversation generic(NETLINK_GENERIC);
    NetlinkQuestion question(GENL_ID_CTRL);
    question.put(genlmsghdr{.cmd = CTRL_CMD_GETFAMILY, .version = 1, .reserved = 0});
    question.add(CTRL_ATTR_FAMILY_NAME, std::as_bytes(std::span("nlctrl")));
    std::optional<std::uint16_t> family;

    const auto outcome = generic.ask(question, [&](const nlmsghdr&, Netlink::Bytes content) {
        family = WirelessLink::parseFamily(content);
    });

    EXPECT_EQ(outcome, NetlinkConversation::Outcome::answered);
    EXPECT_EQ(family, GENL_ID_CTRL);
}

TEST(WirelessLink, TheTableTellsTheLevelOfEachInterface) {
    const std::string lines =
        "wlp3s0: 0000   70.  -40.  -256        0      0      0      0      0        0\n"
        " wlan0: 0000   28.  -82.  -256        0      0      0      0      9        0\n";

    EXPECT_EQ(signalInTable(lines), -82);
    EXPECT_EQ(signalInTable(lines, "wlp3s0"), -40);
    EXPECT_EQ(signalInTable(lines, "wlan1"), std::nullopt);
}

TEST(WirelessLink, ATableWithoutAUsefulLevelTellsNone) {
    EXPECT_EQ(signalInTable(" wlan0: 0000   28.   60.  -256  0 0 0 0 0 0\n"), std::nullopt);
    EXPECT_EQ(signalInTable(" wlan0: 0000   28.   -1e99  -256  0 0 0 0 0 0\n"), std::nullopt);
    EXPECT_EQ(signalInTable(" wlan0: 0000   28."), std::nullopt);
    EXPECT_EQ(signalInTable(""), std::nullopt);
    EXPECT_EQ(WirelessLink::fromTable("/nowhere/wireless", "wlan0"), std::nullopt);
}

} // namespace tarnwick
