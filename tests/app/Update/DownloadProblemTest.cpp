// What users are told of a download that failed.
#include "app/Update/Work/DownloadProblem.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using Problem = Downloader::Problem;

TEST(DownloadProblem, IsToldWithTheServersWords) {
    const auto told = [](Problem problem, const char* detail) {
        return sentence({.problem = problem, .detail = detail});
    };
    EXPECT_EQ(
        told(Problem::missing, "404 Not Found"), "The update server does not have the file (404 Not Found).");
    EXPECT_EQ(
        told(Problem::unavailable, "503 Service Unavailable"),
        "The update server can't serve the file now (503 Service Unavailable).");
    EXPECT_EQ(
        told(Problem::unusable, "too many redirects"),
        "The update server's answer is not the file (too many redirects).");
    EXPECT_EQ(told(Problem::silent, ""), "The update server does not answer.");
}

TEST(DownloadProblem, MayPassUnlessItIsTheFiles) {
    for (const Problem problem : {Problem::missing, Problem::unusable, Problem::tooLarge}) {
        EXPECT_FALSE(mayPass(problem)) << static_cast<int>(problem);
    }
    for (const Problem problem :
         {Problem::unreachable, Problem::silent, Problem::untrusted, Problem::notHttps, Problem::unavailable,
          Problem::brokenOff}) {
        EXPECT_TRUE(mayPass(problem)) << static_cast<int>(problem);
    }
}

} // namespace
} // namespace tarnwick
