// Which release of a feed is an update here.
#include "core/Update/UpdateDecision.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

#include <functional>

namespace tarnwick {
namespace {

using std::chrono::days;
using std::chrono::seconds;
using Reason = RefusedUpdate::Reason;

/// When the feeds of these tests are signed.
const std::chrono::sys_seconds signing = std::chrono::sys_days(std::chrono::year(2026) / 11 / 23);

ReleaseVersion versionOf(const std::string& text) {
    return ReleaseVersion::parse(text).value();
}

Release release(const std::string& version, const std::string& channel = "stable") {
    return {
        .version = versionOf(version),
        .channel = channel,
        .minimumSystem = versionOf("6.1"),
        .archives = {
            {.address = "https://one.example/" + version + "-aarch64", .machine = "aarch64"},
            {.address = "https://one.example/" + version + "-x86_64", .machine = "x86_64"}}};
}

Feed feedOf(std::vector<Release> releases) {
    return {.signedAt = signing, .releases = std::move(releases)};
}

UpdateCircumstances here() {
    return {
        .running = versionOf("0.1.0"),
        .machine = "x86_64",
        .system = versionOf("6.1"),
        .channel = "stable",
        .now = signing + days(1)};
}

/// As words: "up to date", the address of the archive found, or the number of the reason.
std::string told(const UpdateDecision& decision) {
    if (const auto* const found = std::get_if<FoundUpdate>(&decision)) {
        return found->release.version.text() + " at " + found->archive.address;
    }
    if (const auto* const refused = std::get_if<RefusedUpdate>(&decision)) {
        return "refused " + std::to_string(static_cast<int>(refused->reason)) + ": " + refused->version.text()
               + " " + refused->needed.text();
    }
    return "up to date";
}

std::string found(const std::string& version) {
    return version + " at https://one.example/" + version + "-x86_64";
}

std::string refused(Reason reason, const std::string& version = "0", const std::string& needed = "0") {
    return told(RefusedUpdate{.reason = reason, .version = versionOf(version), .needed = versionOf(needed)});
}

struct UpdateCase {
    std::string name;
    std::function<void(Feed&, UpdateCircumstances&)> change;
    std::string expected;

    friend void PrintTo(const UpdateCase& tested, std::ostream* out) { *out << tested.name; }
};

using Here = UpdateCircumstances&;

class UpdateDecisionOf : public testing::TestWithParam<UpdateCase> {};

INSTANTIATE_TEST_SUITE_P(
    Versions, UpdateDecisionOf,
    testing::Values(
        UpdateCase{"Newer", [](Feed&, Here) {}, found("0.2.0")},
        UpdateCase{"Same", [](Feed&, Here on) { on.running = versionOf("0.2"); }, "up to date"},
        UpdateCase{"Older", [](Feed&, Here on) { on.running = versionOf("0.2.1"); }, "up to date"},
        UpdateCase{
            "OlderWhenAsked",
            [](Feed&, Here on) {
                on.running = versionOf("0.2.1");
                on.isAskedFor = true;
            },
            "up to date"},
        UpdateCase{
            "NewestOfSeveral",
            [](Feed& feed, Here) { feed.releases = {release("0.9.0"), release("0.10.0"), release("0.2.0")}; },
            found("0.10.0")},
        UpdateCase{"NoRelease", [](Feed& feed, Here) { feed.releases.clear(); }, "up to date"}),
    test::caseName);

INSTANTIATE_TEST_SUITE_P(
    Channels, UpdateDecisionOf,
    testing::Values(
        UpdateCase{
            "OtherChannel", [](Feed& feed, Here) { feed.releases = {release("0.2.0", "beta")}; },
            "up to date"},
        UpdateCase{
            "OwnChannel",
            [](Feed& feed, Here on) {
                on.channel = "beta";
                feed.releases.push_back(release("0.3.0", "beta"));
                feed.releases.push_back(release("0.4.0", "nightly"));
            },
            found("0.3.0")},
        UpdateCase{"StableInOtherChannel", [](Feed&, Here on) { on.channel = "beta"; }, found("0.2.0")}),
    test::caseName);

INSTANTIATE_TEST_SUITE_P(
    Withheld, UpdateDecisionOf,
    testing::Values(
        UpdateCase{"Skipped", [](Feed&, Here on) { on.skipped = versionOf("0.2.0"); }, "up to date"},
        UpdateCase{"OlderThanSkipped", [](Feed&, Here on) { on.skipped = versionOf("0.3.0"); }, "up to date"},
        UpdateCase{
            "NewerThanSkipped", [](Feed&, Here on) { on.skipped = versionOf("0.1.9"); }, found("0.2.0")},
        UpdateCase{
            "SkippedButAskedFor",
            [](Feed&, Here on) {
                on.skipped = versionOf("0.2.0");
                on.isAskedFor = true;
            },
            found("0.2.0")},
        UpdateCase{"RolledBack", [](Feed&, Here on) { on.rolledBack = versionOf("0.2.0"); }, "up to date"},
        UpdateCase{
            "RolledBackButAskedFor",
            [](Feed&, Here on) {
                on.rolledBack = versionOf("0.2.0");
                on.isAskedFor = true;
            },
            found("0.2.0")},
        UpdateCase{
            "NewerThanRolledBack",
            [](Feed& feed, Here on) {
                on.rolledBack = versionOf("0.2.0");
                feed.releases.push_back(release("0.2.1"));
            },
            found("0.2.1")},
        UpdateCase{
            "SkippedThatDoesNotFit",
            [](Feed&, Here on) {
                on.skipped = versionOf("0.2.0");
                on.machine = "riscv64";
            },
            "up to date"}),
    test::caseName);

INSTANTIATE_TEST_SUITE_P(
    Machines, UpdateDecisionOf,
    testing::Values(
        UpdateCase{
            "NoArchive", [](Feed&, Here on) { on.machine = "riscv64"; }, refused(Reason::noArchive, "0.2.0")},
        UpdateCase{
            "OldSystem", [](Feed&, Here on) { on.system = versionOf("5.10"); },
            refused(Reason::systemTooOld, "0.2.0", "6.1")},
        UpdateCase{"NewerSystem", [](Feed&, Here on) { on.system = versionOf("6.12"); }, found("0.2.0")},
        UpdateCase{
            "NewestOfThoseThatFit",
            [](Feed& feed, Here) {
                feed.releases = {release("0.2.0"), release("0.3.0"), release("0.4.0"), release("0.5.0")};
                feed.releases[2].minimumSystem = versionOf("6.2");
                feed.releases[3].archives.pop_back();
            },
            found("0.3.0")},
        UpdateCase{
            "NewestOfThoseThatDoNotFit",
            [](Feed& feed, Here on) {
                on.system = versionOf("5.10");
                feed.releases = {release("0.2.0"), release("0.3.0")};
                feed.releases[1].minimumSystem = versionOf("6.2");
            },
            refused(Reason::systemTooOld, "0.3.0", "6.2")},
        UpdateCase{
            "OtherMachineAndUpToDate",
            [](Feed&, Here on) {
                on.machine = "riscv64";
                on.running = versionOf("0.2.0");
            },
            "up to date"}),
    test::caseName);

INSTANTIATE_TEST_SUITE_P(
    SigningTimes, UpdateDecisionOf,
    testing::Values(
        UpdateCase{"SeenBefore", [](Feed&, Here on) { on.lastSeen = signing; }, found("0.2.0")},
        UpdateCase{
            "LaterThanSeen", [](Feed&, Here on) { on.lastSeen = signing - seconds(1); }, found("0.2.0")},
        UpdateCase{
            "Replayed", [](Feed&, Here on) { on.lastSeen = signing + seconds(1); },
            refused(Reason::replayed)},
        UpdateCase{
            "ReplayedWhenAsked",
            [](Feed&, Here on) {
                on.lastSeen = signing + seconds(1);
                on.isAskedFor = true;
            },
            refused(Reason::replayed)},
        UpdateCase{"NinetyDaysOld", [](Feed&, Here on) { on.now = signing + days(90); }, found("0.2.0")},
        UpdateCase{
            "Stale", [](Feed&, Here on) { on.now = signing + days(90) + seconds(1); },
            refused(Reason::stale)},
        UpdateCase{
            "StaleAndUpToDate",
            [](Feed& feed, Here on) {
                feed.releases.clear();
                on.now = signing + days(91);
            },
            refused(Reason::stale)},
        UpdateCase{"ADayAhead", [](Feed&, Here on) { on.now = signing - days(1); }, found("0.2.0")},
        UpdateCase{
            "InFuture", [](Feed&, Here on) { on.now = signing - days(1) - seconds(1); },
            refused(Reason::signedInFuture)},
        UpdateCase{
            "ReplayedUnderAClockSetBack",
            [](Feed&, Here on) {
                on.now = signing;
                on.lastSeen = signing + days(200);
            },
            refused(Reason::replayed)}),
    test::caseName);

TEST_P(UpdateDecisionOf, FollowsFeedAndCircumstances) {
    Feed feed = feedOf({release("0.2.0")});
    UpdateCircumstances circumstances = here();
    GetParam().change(feed, circumstances);
    EXPECT_EQ(told(decideOnUpdate(feed, circumstances)), GetParam().expected);
}

TEST(UpdateTrust, IsOfTheFeedWhateverItHasForThisMachine) {
    EXPECT_TRUE(isTrusted(UpToDate{}));
    EXPECT_TRUE(isTrusted(FoundUpdate{}));
    EXPECT_TRUE(isTrusted(RefusedUpdate{.reason = Reason::noArchive}));
    EXPECT_TRUE(isTrusted(RefusedUpdate{.reason = Reason::systemTooOld}));
    for (const Reason reason : {Reason::signedInFuture, Reason::replayed, Reason::stale}) {
        EXPECT_FALSE(isTrusted(RefusedUpdate{.reason = reason})) << static_cast<int>(reason);
    }
}

TEST(RefusedUpdateText, TellsTheReason) {
    const auto told = [](Reason reason) {
        return sentence({.reason = reason, .version = versionOf("0.3.0"), .needed = versionOf("6.5")});
    };
    EXPECT_EQ(
        told(Reason::signedInFuture),
        "The update information is dated in the future. Check this machine's date and time.");
    EXPECT_EQ(
        told(Reason::replayed),
        "The update information is older than what was received before, so it is not trusted.");
    EXPECT_EQ(
        told(Reason::stale), "The update information is more than 90 days old, so it is not trusted. This "
                             "machine's date may be wrong.");
    EXPECT_EQ(told(Reason::noArchive), "Tarnwick 0.3.0 is not made for this machine.");
    EXPECT_EQ(told(Reason::systemTooOld), "Tarnwick 0.3.0 needs Linux 6.5 or newer.");
}

} // namespace
} // namespace tarnwick
