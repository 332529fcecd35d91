// Servers that are not who they should be.
#include "tests/platform/https/HttpsDownloaderTest.h"

namespace tarnwick {

namespace {

/// The name of a server.
class HttpsTrustTest : public HttpsDownloaderTest, public testing::WithParamInterface<std::string> {};

} // namespace

TEST_P(HttpsTrustTest, AServerWithABadCertificateIsUntrusted) {
    servers_.put("secret", "not to be had");

    const Outcome outcome = fetchedFrom("/secret", GetParam());

    ASSERT_EQ(outcome.problem(), Downloader::Problem::untrusted);
    EXPECT_NE(outcome.failure->detail, "");
    EXPECT_EQ(outcome.content, "");
    EXPECT_TRUE(servers_.requests("/secret", GetParam()).empty());
}

TEST_P(HttpsTrustTest, ARedirectToSuchAServerIsUntrusted) {
    servers_.put("secret", "not to be had");
    servers_.behave(
        "/elsewhere", {{"status", 302},
                       {"body", ""},
                       {"headers", {{"Location", servers_.address("/secret", GetParam())}}}});

    EXPECT_EQ(fetchedFrom("/elsewhere").problem(), Downloader::Problem::untrusted);
}

INSTANTIATE_TEST_SUITE_P(
    Servers, HttpsTrustTest, testing::Values("expired", "other host", "self-signed", "unknown authority"),
    [](const auto& test) {
        std::string name = test.param;
        std::erase_if(name, [](char letter) { return letter == ' ' || letter == '-'; });
        return name;
    });

TEST_F(HttpsDownloaderTest, AServerWithoutEncryptionIsUnreachable) {
    const std::string address = servers_.address("/x", "plain");

    const Outcome outcome = fetched(requestFor("https" + address.substr(std::string("http").size())));

    EXPECT_EQ(outcome.problem(), Problem::unreachable);
}

} // namespace tarnwick
