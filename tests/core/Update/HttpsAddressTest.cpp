// Which addresses updates may come from.
#include "core/Update/HttpsAddress.h"

#include <gtest/gtest.h>

#include <string>

namespace tarnwick {
namespace {

class UsableAddress : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(
    HttpsAddress, UsableAddress,
    testing::Values(
        "https://one.example/feed.json", "https://one.example:8443/a/b/feed.json",
        "https://127.0.0.1:443/feed.json", "https://[::1]:8443/feed.json",
        "https://one.example/a%20b/~me/x+y.tar.zst", "https://one.example/AZaz09-._~:[]!$&'()*+,;=%41",
        "https://one.example/" + std::string(longestAddress - 20, 'a')));

TEST_P(UsableAddress, IsTaken) {
    EXPECT_TRUE(isHttpsAddress(GetParam()));
}

class UselessAddress : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(
    HttpsAddress, UselessAddress,
    testing::Values(
        "", "https://", "https:///feed.json", "http://one.example/feed.json", "HTTPS://one.example/feed.json",
        "file:///feed.json", "one.example/feed.json", "//one.example/feed.json",
        "https:/one.example/feed.json", "https://one.example", "https://one.example/",
        "https://one.example/feed/", "https://me@one.example/feed.json",
        "https://one.example@two.example/feed.json", "https://one.example/feed.json?a=b",
        "https://one.example/feed.json#a", "https://one.example?/feed.json",
        "https://one.example:x/feed.json", "https://one.example:65536/feed.json", "https://[::1/feed.json",
        "https://-a/feed.json", "https://one..example/feed.json", " https://one.example/feed.json",
        "https://one.example/feed json", "https://one.example/feed.json\n", "https://one.example\\/feed.json",
        "https://one.example/\"feed.json", "https://bücher.example/feed.json",
        std::string("https://one.example/feed\0.json", 30),
        "https://one.example/" + std::string(longestAddress - 19, 'a')));

TEST_P(UselessAddress, IsRefused) {
    EXPECT_FALSE(isHttpsAddress(GetParam()));
}

TEST(HttpsAddress, EndsWithTheNameOfAFile) {
    EXPECT_EQ(
        fileNameIn("https://one.example/a/Tarnwick-0.2.0-x86_64.tar.zst"), "Tarnwick-0.2.0-x86_64.tar.zst");
}

} // namespace
} // namespace tarnwick
