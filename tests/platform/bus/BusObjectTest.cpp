// An object of ours as other programs meet it, whatever they send.
#include "platform/bus/BusObject.h"

#include "tests/platform/bus/BusTest.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* properties = "org.freedesktop.DBus.Properties";

class BusObjectTest : public BusTest {
protected:
    void SetUp() override {
        BusTest::SetUp();
        ASSERT_TRUE(runUntilConnected());
        peer_ = &addPeer();
        object_.emplace(*bus_.link(), "/object", "test.Object");
        object_->method(
            "Join", {"first", "second"}, {"joined"},
            [](const std::string& first, const std::string& second) { return first + second; });
        object_->method("Divide", {"a", "b"}, {"quotient", "rest"}, divide);
        object_->method("Break", {}, {}, [] { throw std::runtime_error("broken"); });
        object_->method("End", {}, {}, [this] { object_.reset(); });
        object_->property("Silent", [] { return std::string("silent"); });
        object_->property("Told", [this] { return told_; }, BusObject::Change::told);
        object_->property("Broken", []() -> bool { throw std::runtime_error("broken"); });
        object_->signal<std::string>("Spoken", {"text"});
        ASSERT_TRUE(object_->publish());
    }

    using Quotient = std::tuple<std::int32_t, std::int32_t>;

    static BusOutcome<Quotient> divide(std::int32_t a, std::int32_t b) {
        if (b == 0) {
            return BusError{.name = "test.Error.Zero", .text = "b is 0"};
        }
        return Quotient(a / b, a % b);
    }

    template<typename... Arguments>
    [[nodiscard]] std::shared_ptr<BusPeer::Answer> call(
        const char* interface, const std::string& method, const Arguments&... arguments) {
        auto answer = peer_->call({bus_.uniqueName(), "/object", interface}, method, arguments...);
        EXPECT_TRUE(runUntilAnswered(answer));
        return answer;
    }

    [[nodiscard]] std::shared_ptr<BusPeer::Answer> read(const std::string& property) {
        return call(properties, "Get", std::string("test.Object"), property);
    }

    std::uint32_t told_ = 1;
    std::optional<BusObject> object_;
    BusPeer* peer_ = nullptr;
};

} // namespace

TEST_F(BusObjectTest, AMethodIsAnsweredWithItsResult) {
    EXPECT_EQ(call("test.Object", "Join", std::string("a"), std::string("b"))->value<std::string>(), "ab");
}

TEST_F(BusObjectTest, AMethodMayHaveSeveralResultsOrFail) {
    EXPECT_EQ(
        (call("test.Object", "Divide", std::int32_t{7}, std::int32_t{2})
             ->values<std::int32_t, std::int32_t>()),
        std::tuple(3, 1));
    EXPECT_EQ(call("test.Object", "Divide", std::int32_t{7}, std::int32_t{0})->error(), "test.Error.Zero");
}

TEST_F(BusObjectTest, ArgumentsOfOtherTypesAreAnError) {
    const std::map<std::string, std::variant<bool>> entries{{"key", true}};

    EXPECT_EQ(call("test.Object", "Join")->error(), BusError::invalidArguments);
    EXPECT_EQ(call("test.Object", "Join", std::string("a"))->error(), BusError::invalidArguments);
    EXPECT_EQ(
        call("test.Object", "Join", std::string("a"), std::int32_t{1})->error(), BusError::invalidArguments);
    EXPECT_EQ(call("test.Object", "Join", entries, entries)->error(), BusError::invalidArguments);
}

TEST_F(BusObjectTest, WhatItDoesNotHaveIsAnError) {
    EXPECT_EQ(call("test.Object", "Explode")->error(), "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(call("test.Other", "Join")->error(), "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(read("Explosive")->error(), "org.freedesktop.DBus.Error.UnknownProperty");
    const auto set = call(
        properties, "Set", std::string("test.Object"), std::string("Silent"),
        std::variant<std::string>("loud"));
    EXPECT_EQ(set->error(), "org.freedesktop.DBus.Error.PropertyReadOnly");
}

TEST_F(BusObjectTest, AnExceptionInAHandlerIsAnError) {
    EXPECT_EQ(call("test.Object", "Break")->error(), BusError::failed);
    EXPECT_EQ(read("Broken")->error(), BusError::failed);
    EXPECT_EQ(call("test.Object", "Join", std::string(), std::string())->error(), "");
}

TEST_F(BusObjectTest, ItMayEndInsideItsHandler) {
    EXPECT_EQ(call("test.Object", "End")->error(), "");

    EXPECT_EQ(
        call("test.Object", "Join", std::string(), std::string())->error(),
        "org.freedesktop.DBus.Error.UnknownObject");
}

TEST_F(BusObjectTest, ASignalCarriesItsValues) {
    std::vector<std::string> heard;
    const Subscription match =
        peer_->link().addMatch("type='signal',interface='test.Object'", [&heard](BusMessage& message) {
            heard.push_back(message.member() + " " + std::get<0>(message.read<std::string>().value()));
        });
    ASSERT_TRUE(runUntilHeardBy(*peer_));

    object_->emit("Spoken", std::string("hello"));

    ASSERT_TRUE(runUntilHeardBy(*peer_));
    EXPECT_THAT(heard, ElementsAre("Spoken hello"));
}

TEST_F(BusObjectTest, AChangedPropertyIsToldWithItsValue) {
    using Changed = std::map<std::string, std::variant<std::uint32_t>>;
    Changed changed;
    const Subscription match =
        peer_->link().addMatch("type='signal',member='PropertiesChanged'", [&changed](BusMessage& message) {
            changed = std::get<1>(message.read<std::string, Changed>().value());
        });
    ASSERT_TRUE(runUntilHeardBy(*peer_));
    told_ = 2;

    object_->emitChange("Told");

    ASSERT_TRUE(runUntilHeardBy(*peer_));
    EXPECT_EQ(changed, (Changed{{"Told", 2U}}));
}

TEST_F(BusObjectTest, ToolsSeeTheNamesOfArgumentsAndHowChangesAreTold) {
    const auto answer = call("org.freedesktop.DBus.Introspectable", "Introspect");

    const auto description = answer->value<std::string>();
    EXPECT_THAT(description, HasSubstr("<arg type=\"s\" name=\"second\" direction=\"in\"/>"));
    EXPECT_THAT(description, HasSubstr("<arg type=\"i\" name=\"rest\" direction=\"out\"/>"));
    EXPECT_THAT(description, HasSubstr("<signal name=\"Spoken\">"));
    EXPECT_THAT(description, HasSubstr("<property name=\"Silent\" type=\"s\" access=\"read\">"));
    EXPECT_THAT(
        description,
        HasSubstr("<annotation name=\"org.freedesktop.DBus.Property.EmitsChangedSignal\" value=\"false\"/>"));
}

} // namespace tarnwick
