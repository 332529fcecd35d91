// Why the connection is called down.
#include "core/DownReason.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using Kind = DownReason::Kind;

struct Case {
    const char* name;
    std::optional<PingError> startError;
    bool pathSatisfied;
    DownReason expected;
};

class DownReasonFrom : public testing::TestWithParam<Case> {};

INSTANTIATE_TEST_SUITE_P(
    DownReason, DownReasonFrom,
    testing::Values(
        Case{"NoPathAlone", std::nullopt, false, {Kind::noNetwork}},
        Case{"NoPathOverASocketError", PingError::socket("denied"), false, {Kind::noNetwork}},
        Case{"NoPathOverAResolutionError", PingError::resolution("unknown"), false, {Kind::noNetwork}},
        Case{"SilenceWithAPath", std::nullopt, true, {Kind::noReplies}},
        Case{"ASocketErrorWithItsText", PingError::socket("denied"), true, {Kind::socketError, "denied"}},
        Case{"AResolutionError", PingError::resolution("unknown"), true, {Kind::hostNotFound}}),
    [](const auto& tested) { return tested.param.name; });

TEST_P(DownReasonFrom, IsAsExpected) {
    EXPECT_EQ(DownReason::from(GetParam().startError, GetParam().pathSatisfied), GetParam().expected);
}

TEST(DownReason, OfSocketErrorsIsEqualOnlyWithTheSameText) {
    EXPECT_NE((DownReason{Kind::socketError, "a"}), (DownReason{Kind::socketError, "b"}));
}

} // namespace
} // namespace tarnwick
