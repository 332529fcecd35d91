// How the updater calls itself.
#include "app/Update/UserAgent.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

TEST(UserAgent, EndsInTheSystemsMajorAndMinorVersion) {
    const UserAgentParts parts{
        .applicationVersion = "1.2",
        .framework = "TarnwickUpdate",
        .frameworkVersion = "3",
        .system = "macOS",
        .systemVersion = "14.5.1"};

    EXPECT_EQ(userAgent(parts), "Tarnwick/1.2 TarnwickUpdate/3 macOS/14.5");
}

TEST(UserAgent, LeavesOutWhatAKernelAddsToItsVersion) {
    const UserAgentParts parts{
        .applicationVersion = "1.2",
        .framework = "TarnwickUpdate",
        .frameworkVersion = "3",
        .system = "Linux",
        .systemVersion = "6.1.0-18-amd64"};

    EXPECT_EQ(userAgent(parts), "Tarnwick/1.2 TarnwickUpdate/3 Linux/6.1");
}

TEST(UserAgent, HasSomethingInPlaceOfUnknownVersions) {
    const UserAgentParts parts{
        .applicationVersion = std::nullopt,
        .framework = "TarnwickUpdate",
        .frameworkVersion = std::nullopt,
        .system = "Linux",
        .systemVersion = "unknown"};

    EXPECT_EQ(userAgent(parts), "Tarnwick/0 TarnwickUpdate/2 Linux/0.0");
}

} // namespace
} // namespace tarnwick
