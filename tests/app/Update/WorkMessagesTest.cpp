// What goes between the program and the process that does an update's work.
#include "app/Update/Work/WorkMessages.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

template<class Part>
const Part* partOf(const std::optional<WorkMessage>& message) {
    return message ? std::get_if<Part>(&*message) : nullptr;
}

TEST(WorkMessages, AnOrderArrivesAsItWas) {
    const auto order = decodedOrder(
        encoded(DownloadOrder{.feed = "{\"a\":\n\"é\"}", .version = ReleaseVersion::parse("1.10").value()}));

    ASSERT_TRUE(order);
    EXPECT_EQ(order->feed, "{\"a\":\n\"é\"}");
    EXPECT_EQ(order->version.text(), "1.10");
}

TEST(WorkMessages, EachMessageArrivesAsItWas) {
    const auto received = decodedMessage(encoded(WorkMessage(UpdateWork::Received{.bytes = 5'000'000'000})));
    ASSERT_NE(partOf<UpdateWork::Received>(received), nullptr);
    EXPECT_EQ(partOf<UpdateWork::Received>(received)->bytes, 5'000'000'000U);

    EXPECT_NE(
        partOf<UpdateWork::Complete>(decodedMessage(encoded(WorkMessage(UpdateWork::Complete{})))), nullptr);

    const auto ready = decodedMessage(encoded(WorkMessage(UpdateWork::Ended{})));
    ASSERT_NE(partOf<UpdateWork::Ended>(ready), nullptr);
    EXPECT_EQ(partOf<UpdateWork::Ended>(ready)->problem, std::nullopt);

    const auto failed = decodedMessage(encoded(WorkMessage(UpdateWork::Ended{.problem = "It \"failed\"."})));
    ASSERT_NE(partOf<UpdateWork::Ended>(failed), nullptr);
    EXPECT_EQ(partOf<UpdateWork::Ended>(failed)->problem, "It \"failed\".");
    EXPECT_FALSE(partOf<UpdateWork::Ended>(failed)->mayPass);

    const auto cut =
        decodedMessage(encoded(WorkMessage(UpdateWork::Ended{.problem = "It was cut.", .mayPass = true})));
    ASSERT_NE(partOf<UpdateWork::Ended>(cut), nullptr);
    EXPECT_TRUE(partOf<UpdateWork::Ended>(cut)->mayPass);
}

TEST(WorkMessages, TheEndOfACheckArrivesAsItWas) {
    const auto found = decodedMessage(
        encoded(WorkMessage(UpdateWork::CheckResult(UpdateWork::VerifiedFeed{.text = "{\n}"}))));
    const auto* const result = partOf<UpdateWork::CheckResult>(found);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(std::get<UpdateWork::VerifiedFeed>(*result).text, "{\n}");

    const auto failed = decodedMessage(encoded(WorkMessage(UpdateWork::CheckResult(UpdateWork::CheckFailure{
        .text = "No.", .hasAnswered = true, .distrust = UpdateWork::Distrust::likely}))));
    const auto* const failure = partOf<UpdateWork::CheckResult>(failed);
    ASSERT_NE(failure, nullptr);
    EXPECT_EQ(std::get<UpdateWork::CheckFailure>(*failure).text, "No.");
    EXPECT_TRUE(std::get<UpdateWork::CheckFailure>(*failure).hasAnswered);
    EXPECT_EQ(std::get<UpdateWork::CheckFailure>(*failure).distrust, UpdateWork::Distrust::likely);
}

TEST(WorkMessages, EachIsOneLine) {
    const WorkMessage message(UpdateWork::CheckResult(UpdateWork::VerifiedFeed{.text = "a\nb\r\n"}));

    EXPECT_EQ(encoded(message).find('\n'), std::string::npos);
}

TEST(WorkMessages, WordsInNoEncodingDoNotBreakAMessage) {
    const auto message = decodedMessage(encoded(WorkMessage(UpdateWork::Ended{.problem = "\xff\xfe"})));

    ASSERT_NE(partOf<UpdateWork::Ended>(message), nullptr);
    EXPECT_TRUE(partOf<UpdateWork::Ended>(message)->problem);
}

TEST(WorkMessages, OtherTextsAreNone) {
    for (const char* text :
         {"", "x", "{}", "[]", "null", R"({"received":-1})", R"({"received":"5"})", R"({"failure":"x"})",
          R"({"feed":1})", R"({"failure":"x","hasAnswered":true,"distrust":3})",
          R"({"failure":"x","hasAnswered":true,"distrust":-1})"}) {
        EXPECT_FALSE(decodedMessage(text)) << text;
        EXPECT_FALSE(decodedOrder(text)) << text;
    }
}

} // namespace
} // namespace tarnwick
