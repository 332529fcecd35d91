// The extension, as a shell tells of it.
#include "platform/bus/ShellExtension.h"

#include "tests/platform/bus/BusTest.h"

#include "platform/bus/BusObject.h"
#include "tests/support/CaseName.h"

#include <gmock/gmock.h>
#include <map>
#include <variant>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Properties = std::map<std::string, std::variant<double, std::string>>;

constexpr auto modern = "item-place@tarnwick.org";
constexpr auto older = "item-place-43@tarnwick.org";

/// Plays the shell.
class ShellExtensionTest : public BusTest {
protected:
    void addShell(const std::string& version, const std::string& known, const Properties& extension) {
        BusPeer& peer = addPeer();
        shell_.emplace(peer.link(), "/org/gnome/Shell", "org.gnome.Shell.Extensions");
        shell_->property("ShellVersion", [version] { return version; });
        shell_->method("GetExtensionInfo", {"uuid"}, {"info"}, [=](const std::string& uuid) {
            return uuid == known ? extension : Properties{};
        });
        shell_->method("EnableExtension", {"uuid"}, {"success"}, [this](const std::string& uuid) {
            switchedOn_.push_back(uuid);
            return canSwitchOn_;
        });
        EXPECT_TRUE(shell_->publish());
        peer.requestName("org.gnome.Shell");
    }

    [[nodiscard]] std::optional<bool> askWhetherOff() {
        std::optional<bool> answer;
        extension_.askWhetherOff([&answer](bool isOff) { answer = isOff; });
        EXPECT_TRUE(runUntil([&answer] { return answer.has_value(); }));
        return answer;
    }

    [[nodiscard]] std::optional<bool> switchOn() {
        std::optional<bool> answer;
        extension_.switchOn([&answer](bool isOn) { answer = isOn; });
        EXPECT_TRUE(runUntil([&answer] { return answer.has_value(); }));
        return answer;
    }

    std::optional<BusObject> shell_;
    std::vector<std::string> switchedOn_;
    bool canSwitchOn_ = true;
    ShellExtension extension_{bus_};
};

struct Told {
    std::string name;
    std::string version;
    std::string known;
    Properties extension;
    bool isOff;

    friend void PrintTo(const Told& told, std::ostream* out) { *out << told.name; }
};

class ToldOfExtension : public ShellExtensionTest, public testing::WithParamInterface<Told> {};

} // namespace

TEST_P(ToldOfExtension, IsOffOnlyIfTheShellCouldSwitchItOn) {
    addShell(GetParam().version, GetParam().known, GetParam().extension);
    ASSERT_TRUE(runUntilConnected());

    EXPECT_EQ(askWhetherOff(), GetParam().isOff);
}

INSTANTIATE_TEST_SUITE_P(
    ShellExtension, ToldOfExtension,
    testing::Values(
        Told{"SwitchedOff", "48.7", modern, {{"state", 2.0}, {"name", std::string("x")}}, true},
        Told{"SinceTheLogin", "48.7", modern, {{"state", 6.0}}, true},
        Told{"SwitchedOn", "48.7", modern, {{"state", 1.0}}, false},
        Told{"OutOfDate", "48.7", modern, {{"state", 4.0}}, false},
        Told{"NotInstalled", "48.7", "another@one.example", {{"state", 2.0}}, false},
        Told{"WithoutState", "48.7", modern, {}, false},
        Told{"FirstWithModules", "45.0", modern, {{"state", 2.0}}, true},
        Told{"LastWithoutModules", "44.9", older, {{"state", 2.0}}, true},
        Told{"OfAnotherVersion", "44.9", modern, {{"state", 2.0}}, false},
        Told{"OfNoVersion", "unknown", modern, {{"state", 2.0}}, false}),
    test::caseName);

TEST_F(ShellExtensionTest, WithoutSuchAShellItIsNotOff) {
    ASSERT_TRUE(runUntilConnected());

    EXPECT_EQ(askWhetherOff(), false);
}

TEST_F(ShellExtensionTest, SwitchesOnTheOneForTheShellsVersion) {
    addShell("43.9", older, {{"state", 6.0}});
    ASSERT_TRUE(runUntilConnected());
    ASSERT_EQ(askWhetherOff(), true);
    ASSERT_THAT(switchedOn_, IsEmpty());

    EXPECT_EQ(switchOn(), true);

    EXPECT_THAT(switchedOn_, ElementsAre(older));
}

TEST_F(ShellExtensionTest, TellsThatTheShellDidNotSwitchItOn) {
    addShell("43.9", older, {{"state", 6.0}});
    ASSERT_TRUE(runUntilConnected());
    ASSERT_EQ(askWhetherOff(), true);
    canSwitchOn_ = false;

    EXPECT_EQ(switchOn(), false);
}

} // namespace tarnwick
