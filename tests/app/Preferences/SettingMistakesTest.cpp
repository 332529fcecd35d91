// What is told about the values in the settings file.
#include "app/Preferences/SettingMistakes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

StoredSetting text(const std::string& key, const std::string& value, int line = 0) {
    return {.key = key, .value = value, .written = '"' + value + '"', .line = line};
}

StoredSetting number(const std::string& key, double value, const std::string& written) {
    return {.key = key, .value = value, .written = written};
}

} // namespace

TEST(SettingMistakes, AreNoneInGoodSettings) {
    EXPECT_THAT(
        settingMistakes(
            {text("Hostname", " one.example "),
             number("PingInterval", 60, "60"),
             number("PingTimeout", 2.5, "2.5"),
             {.key = "ShowPacketLossText", .value = true, .written = "true"},
             text("PanelFace", "wide")}),
        IsEmpty());
}

TEST(SettingMistakes, NameTheLineTheKeyTheRuleAndTheValue) {
    EXPECT_THAT(
        settingMistakes({text("PingInterval", "2", 3)}),
        ElementsAre("line 3: PingInterval must be a whole number of seconds, 1 to 60, not \"2\"; ignored"));
    EXPECT_THAT(
        settingMistakes({{.key = "ShowIcon", .value = std::nullopt, .written = "null"}}),
        ElementsAre("ShowIcon must be true or false, not null; ignored"));
}

TEST(SettingMistakes, SuggestTheKeyWhoseLettersDifferOnlyInCase) {
    EXPECT_THAT(
        settingMistakes({text("hostname", "one.example", 2), text("Colour", "red", 7)}),
        ElementsAre(
            "line 2: there is no setting \"hostname\"; Hostname is one",
            "line 7: there is no setting \"Colour\""));
}

TEST(SettingMistakes, AreToldInTheOrderOfTheFile) {
    EXPECT_THAT(
        settingMistakes({text("B", "", 9), text("A", "", 2)}),
        ElementsAre("line 2: there is no setting \"A\"", "line 9: there is no setting \"B\""));
}

TEST(SettingMistakes, TellWhichIntervalIsUsedInsteadOfOneOutOfRange) {
    EXPECT_THAT(
        settingMistakes({number("PingInterval", 600, "600")}),
        ElementsAre("PingInterval must be a whole number of seconds, 1 to 60, not 600; 60 is used"));
}

TEST(SettingMistakes, AreValuesThatCanNotBeMeant) {
    for (const StoredSetting& setting :
         {number("PingTimeout", -3, "-3"), number("PingTimeout", 1e6, "1e6"),
          number("PingTimeout", 0.001, "0.001"), number("SlowPingLowThreshold", 0, "0"), text("Hostname", ""),
          text("Hostname", std::string(4000, 'a')), text("PacketLossTextMode", "Always"),
          text("PanelFace", "round"), text("PanelInk", "black")}) {
        EXPECT_THAT(settingMistakes({setting}), ElementsAre(testing::EndsWith("; ignored"))) << setting.key;
    }
}

TEST(SettingMistakes, ShowTheBeginningOfALongKeyOrValue) {
    EXPECT_THAT(
        settingMistakes({text(std::string(4000, 'a'), "")}),
        ElementsAre("there is no setting \"" + std::string(40, 'a') + "…\""));
    EXPECT_THAT(
        settingMistakes({text("Hostname", std::string(4000, 'a'))}),
        ElementsAre(
            "Hostname must be a host name or address, not \"" + std::string(39, 'a')
            + "…: it is too long; ignored"));
}

TEST(SettingMistakes, SayWhyATextIsNoHost) {
    EXPECT_THAT(
        settingMistakes({text("Hostname", "one example", 3)}),
        ElementsAre(
            "line 3: Hostname must be a host name or address, not \"one example\": it has a blank in it; "
            "ignored"));
    EXPECT_THAT(
        settingMistakes({number("Hostname", 8.8, "8.8")}),
        ElementsAre("Hostname must be a host name or address, not 8.8; ignored"));
}

TEST(SettingMistakes, NameAKeyThatIsThereTwiceBesideWhatIsWrongWithItsValue) {
    StoredSetting repeated = text("PingInterval", "2", 3);
    repeated.isRepeated = true;

    EXPECT_THAT(
        settingMistakes({repeated}),
        ElementsAre(
            "line 3: PingInterval is there more than once; this one counts",
            "line 3: PingInterval must be a whole number of seconds, 1 to 60, not \"2\"; ignored"));
}

} // namespace tarnwick
