// What every store of settings promises: the one in memory that the model's tests use, and the file.
#include "platform/xdg/SettingsFile.h"
#include "tests/simulation/MemoryDefaults.h"
#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace tarnwick {

namespace {

using testing::Optional;

class MemoryDriver : public testing::Test {
protected:
    UserDefaults& settings() { return settings_; }

private:
    simulation::MemoryDefaults settings_;
};

class FileDriver : public testing::Test {
protected:
    UserDefaults& settings() { return settings_; }

private:
    simulation::VirtualRunLoop loop_;
    test::TemporaryFolder folder_;
    SettingsFile settings_{loop_, folder_.path() / "settings.json"};
};

template<class Driver>
class UserDefaultsContract : public Driver {};

using Drivers = testing::Types<MemoryDriver, FileDriver>;
TYPED_TEST_SUITE(UserDefaultsContract, Drivers);

const std::string example = "host.example";

} // namespace

TYPED_TEST(UserDefaultsContract, AKeyThatIsNeitherStoredNorRegisteredIsAbsent) {
    this->settings().registerDefaults({{"Other", 4.0}});

    EXPECT_EQ(this->settings().boolean("Key"), std::nullopt);
    EXPECT_EQ(this->settings().number("Key"), std::nullopt);
    EXPECT_EQ(this->settings().text("Key"), std::nullopt);
}

TYPED_TEST(UserDefaultsContract, WhatIsStoredIsReadAtOnceAndAfterAFlush) {
    for (const bool isFlushed : {false, true}) {
        this->settings().set("Flag", false);
        this->settings().set("Number", 2.5);
        this->settings().set("Text", example);
        if (isFlushed) {
            this->settings().flush();
        }

        EXPECT_THAT(this->settings().boolean("Flag"), Optional(false));
        EXPECT_THAT(this->settings().number("Number"), Optional(2.5));
        EXPECT_THAT(this->settings().text("Text"), Optional(example));
    }
}

TYPED_TEST(UserDefaultsContract, AValueIsReadInItsOwnTypeOnly) {
    this->settings().set("Flag", true);
    this->settings().set("Number", 1.0);
    this->settings().set("Text", std::string("1"));

    EXPECT_EQ(this->settings().number("Flag"), std::nullopt);
    EXPECT_EQ(this->settings().text("Flag"), std::nullopt);
    EXPECT_EQ(this->settings().boolean("Number"), std::nullopt);
    EXPECT_EQ(this->settings().text("Number"), std::nullopt);
    EXPECT_EQ(this->settings().boolean("Text"), std::nullopt);
    EXPECT_EQ(this->settings().number("Text"), std::nullopt);
}

TYPED_TEST(UserDefaultsContract, AValueStoredLaterReplacesTheEarlierOneWhateverItsType) {
    this->settings().set("Key", 1.0);

    this->settings().set("Key", example);

    EXPECT_THAT(this->settings().text("Key"), Optional(example));
    EXPECT_EQ(this->settings().number("Key"), std::nullopt);
}

TYPED_TEST(UserDefaultsContract, ADefaultIsReadUntilAValueIsStored) {
    this->settings().registerDefaults({{"Flag", true}, {"Number", 4.0}, {"Text", example}});
    EXPECT_THAT(this->settings().boolean("Flag"), Optional(true));
    EXPECT_THAT(this->settings().number("Number"), Optional(4.0));
    EXPECT_THAT(this->settings().text("Text"), Optional(example));

    this->settings().set("Number", 2.0);

    EXPECT_THAT(this->settings().number("Number"), Optional(2.0));
}

TYPED_TEST(UserDefaultsContract, ADefaultIsReadInsteadOfAStoredValueOfAnotherType) {
    this->settings().registerDefaults({{"Number", 4.0}});

    this->settings().set("Number", example);

    EXPECT_THAT(this->settings().number("Number"), Optional(4.0));
}

TYPED_TEST(UserDefaultsContract, ADefaultRegisteredLaterJoinsTheEarlierOnes) {
    this->settings().registerDefaults({{"Kept", 1.0}, {"Replaced", 2.0}});

    this->settings().registerDefaults({{"Replaced", 3.0}});

    EXPECT_THAT(this->settings().number("Kept"), Optional(1.0));
    EXPECT_THAT(this->settings().number("Replaced"), Optional(3.0));
}

TYPED_TEST(UserDefaultsContract, ARemovedValueLeavesTheDefaultOrNothing) {
    this->settings().registerDefaults({{"Number", 4.0}});
    this->settings().set("Number", 2.0);
    this->settings().set("Text", example);
    this->settings().flush();

    this->settings().remove("Number");
    this->settings().remove("Text");

    EXPECT_THAT(this->settings().number("Number"), Optional(4.0));
    EXPECT_EQ(this->settings().text("Text"), std::nullopt);
}

TYPED_TEST(UserDefaultsContract, RemovingAKeyThatIsNotStoredLeavesItsDefault) {
    this->settings().registerDefaults({{"Number", 4.0}});

    this->settings().remove("Number");

    EXPECT_THAT(this->settings().number("Number"), Optional(4.0));
}

} // namespace tarnwick
