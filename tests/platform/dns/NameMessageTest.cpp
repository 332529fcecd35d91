// Queries byte by byte, and which messages are answers to them.
#include "platform/dns/NameMessage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <sys/socket.h>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAreArray;
using Bytes = std::vector<std::uint8_t>;
using Said = NameServerEvidence::Answer;

constexpr std::size_t flagsPlace = 2;
constexpr std::size_t codePlace = 3;
constexpr std::size_t questionsPlace = 5;
constexpr std::size_t answersPlace = 7;
constexpr std::size_t letterPlace = 13;

class NameMessageTest : public testing::Test {
protected:
    /// An answer without an error, with that many addresses (of which nothing is looked at).
    [[nodiscard]] Bytes response(std::uint8_t addresses) const {
        Bytes message = query_;
        message[flagsPlace] = 0x81;
        message[codePlace] = 0x80;
        message[answersPlace] = addresses;
        return message;
    }

    [[nodiscard]] std::optional<Said> said(const Bytes& message) const {
        return NameMessage::answer(message, query_);
    }

    /// What a response says after a change of one byte.
    [[nodiscard]] std::optional<Said> saidWith(std::size_t place, std::uint8_t byte) const {
        Bytes message = response(1);
        message[place] = byte;
        return said(message);
    }

    Bytes query_ = NameMessage::query(0x1234, "one.Example", AF_INET).value_or(Bytes{});
};

} // namespace

TEST_F(NameMessageTest, AQueryAsksForTheAddressOfAName) {
    const Bytes expected{0x12, 0x34, 1,   0,   0,   1,   0,   0,   0,   0, 0, 0, 3, 'o', 'n',
                         'e',  7,    'E', 'x', 'a', 'm', 'p', 'l', 'e', 0, 0, 1, 0, 1};

    EXPECT_THAT(query_, ElementsAreArray(expected));
}

TEST_F(NameMessageTest, AQueryForIPv6DiffersInItsType) {
    Bytes expected = query_;
    expected[expected.size() - 3] = 28;

    EXPECT_EQ(NameMessage::query(0x1234, "one.Example", AF_INET6), expected);
}

TEST_F(NameMessageTest, TheLongestNameFitsAndNoLongerOne) {
    std::string name(63, 'a');
    for (int part = 0; part < 2; ++part) {
        name += "." + std::string(63, 'a');
    }
    name += "." + std::string(61, 'a');
    ASSERT_EQ(name.size(), 253U);

    ASSERT_TRUE(NameMessage::query(1, name, AF_INET));
    EXPECT_LE(NameMessage::query(1, name, AF_INET)->size(), NameMessage::largest);
    EXPECT_FALSE(NameMessage::query(1, name + "a", AF_INET));
    EXPECT_FALSE(NameMessage::query(1, std::string(64, 'a') + ".example", AF_INET));
}

TEST_F(NameMessageTest, ServersAreNotAskedForNamesThatTheyNeedNotKnow) {
    for (const char* const name :
         {"printer", "printer.local", "printer.LOCAL",
          "b\xc3\xbc"
          "cher.example"}) {
        EXPECT_FALSE(NameMessage::query(1, name, AF_INET)) << name;
    }
    EXPECT_TRUE(NameMessage::query(1, "printer.locally", AF_INET));
    EXPECT_TRUE(NameMessage::query(1, "local.example", AF_INET));
}

TEST_F(NameMessageTest, AnAddressIsFoundOrNot) {
    EXPECT_EQ(said(response(1)), Said::found);
    EXPECT_EQ(said(response(0)), Said::noSuchName);
}

TEST_F(NameMessageTest, CodesHaveTheirMeanings) {
    EXPECT_EQ(saidWith(codePlace, 0x83), Said::noSuchName);
    EXPECT_EQ(saidWith(codePlace, 0x82), Said::failed);
    EXPECT_EQ(saidWith(codePlace, 0x85), Said::refused);
    EXPECT_EQ(saidWith(codePlace, 0x84), Said::refused); // knows no such operation
    EXPECT_EQ(saidWith(codePlace, 0x81), Said::refused); // takes the query for malformed
}

TEST_F(NameMessageTest, AnAnswerThatWasCutHasFoundSomething) {
    Bytes message = response(0);
    message[flagsPlace] = 0x83;

    EXPECT_EQ(said(message), Said::found);
}

TEST_F(NameMessageTest, WhatFollowsTheQuestionIsNotLookedAt) {
    Bytes message = response(3);
    message.resize(400, 0xFF);

    EXPECT_EQ(said(message), Said::found);
}

TEST_F(NameMessageTest, LettersMayChangeTheirCase) {
    EXPECT_EQ(saidWith(letterPlace, 'O'), Said::found);
    EXPECT_EQ(saidWith(letterPlace + 4, 'e'), Said::found);
}

TEST_F(NameMessageTest, WhatIsNoAnswerToTheQuerySaysNothing) {
    EXPECT_FALSE(saidWith(0, 0x13));               // another id
    EXPECT_FALSE(saidWith(1, 0x35));               // likewise
    EXPECT_FALSE(saidWith(flagsPlace, 0x01));      // a query
    EXPECT_FALSE(saidWith(flagsPlace, 0x89));      // an answer to another operation
    EXPECT_FALSE(saidWith(questionsPlace, 0));     // without the question
    EXPECT_FALSE(saidWith(questionsPlace, 2));     // with two
    EXPECT_FALSE(saidWith(letterPlace, 'p'));      // with another name
    EXPECT_FALSE(saidWith(query_.size() - 3, 28)); // with another type
    EXPECT_FALSE(saidWith(query_.size() - 1, 3));  // with another class
    EXPECT_FALSE(said(query_));
}

TEST_F(NameMessageTest, NoBeginningOfAnAnswerIsOne) {
    const Bytes whole = response(1);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(said({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)})) << size;
    }
}

} // namespace tarnwick
