// Servers that are not who they should be.
#include "tests/platform/https/HttpsDownloaderTest.h"

namespace tarnwick {

namespace {

struct BadServer {
    std::string name;
    std::string fault; ///< as users are told
};

class HttpsTrustTest : public HttpsDownloaderTest, public testing::WithParamInterface<BadServer> {};

constexpr auto strangers = "its certificate is signed by nobody whom this machine trusts";

} // namespace

TEST_P(HttpsTrustTest, AServerWithABadCertificateIsUntrusted) {
    servers_.put("secret", "not to be had");

    const Outcome outcome = fetchedFrom("/secret", GetParam().name);

    ASSERT_EQ(outcome.problem(), Downloader::Problem::untrusted);
    EXPECT_EQ(outcome.failure->detail, GetParam().fault);
    EXPECT_EQ(outcome.content, "");
    EXPECT_TRUE(servers_.requests("/secret", GetParam().name).empty());
}

TEST_P(HttpsTrustTest, ARedirectToSuchAServerIsUntrusted) {
    servers_.put("secret", "not to be had");
    servers_.behave(
        "/elsewhere", {{"status", 302},
                       {"body", ""},
                       {"headers", {{"Location", servers_.address("/secret", GetParam().name)}}}});

    EXPECT_EQ(fetchedFrom("/elsewhere").problem(), Downloader::Problem::untrusted);
}

INSTANTIATE_TEST_SUITE_P(
    Servers, HttpsTrustTest,
    testing::Values(
        BadServer{"expired", "its certificate has expired"},
        BadServer{"other host", "its certificate is that of another server"},
        BadServer{"self-signed", strangers}, BadServer{"unknown authority", strangers}),
    [](const auto& test) {
        std::string name = test.param.name;
        std::erase_if(name, [](char letter) { return letter == ' ' || letter == '-'; });
        return name;
    });

TEST_F(HttpsDownloaderTest, AServerWithoutEncryptionIsUnreachable) {
    const std::string address = servers_.address("/x", "plain");

    const Outcome outcome = fetched(requestFor("https" + address.substr(std::string("http").size())));

    EXPECT_EQ(outcome.problem(), Problem::unreachable);
}

} // namespace tarnwick
