// What routers have said of the host.
#include "core/Diagnosis/RouterWords.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

TEST(RouterWordsTest, EachSenderIsCounted) {
    RouterWords words;
    words.note("198.51.100.7", RouterWord::unreachable, 10);
    words.note("192.0.2.1", RouterWord::unreachable, 11);
    words.note("198.51.100.7", RouterWord::unreachable, 12);

    const auto all = words.since(0);
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].sender, "198.51.100.7");
    EXPECT_EQ(all[0].count, 2);
    EXPECT_EQ(all[1].sender, "192.0.2.1");
    EXPECT_EQ(all[1].count, 1);
}

TEST(RouterWordsTest, TheLatestWordCounts) {
    RouterWords words;
    words.note("198.51.100.7", RouterWord::unreachable, 10);
    words.note("192.0.2.1", RouterWord::forbidden, 11);
    words.note("198.51.100.7", RouterWord::forbidden, 12);
    words.note("192.0.2.1", RouterWord::unreachable, 13);

    const auto all = words.since(0);
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].word, RouterWord::forbidden);
    EXPECT_EQ(all[1].word, RouterWord::unreachable);
}

TEST(RouterWordsTest, EarlierWordsDoNotCount) {
    RouterWords words;
    words.note("198.51.100.7", RouterWord::unreachable, 10);
    words.note("192.0.2.1", RouterWord::unreachable, 11);
    words.note("192.0.2.1", RouterWord::unreachable, 12);

    ASSERT_EQ(words.since(11).size(), 1U);
    EXPECT_EQ(words.since(11)[0].count, 2);
    EXPECT_TRUE(words.since(12.1).empty());
}

TEST(RouterWordsTest, AFloodIsBounded) {
    RouterWords words;
    for (int word = 0; word < 1000; ++word) {
        words.note("198.51.100.7", RouterWord::unreachable, word);
    }

    ASSERT_EQ(words.since(0).size(), 1U);
    EXPECT_EQ(words.since(0)[0].count, 64);
    EXPECT_EQ(words.since(990)[0].count, 10); // the latest are kept
}

TEST(RouterWordsTest, WhatIsForgottenWasNotSaid) {
    RouterWords words;
    words.note("198.51.100.7", RouterWord::unreachable, 10);
    words.forget();

    EXPECT_TRUE(words.since(0).empty());
}

} // namespace
} // namespace tarnwick
