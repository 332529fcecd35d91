// What ICMP errors of each type and code say, by the numbers that are assigned to them.
#include "core/Prober/RouterError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace tarnwick {
namespace {

using Kind = ProbeAnswer::Kind;

/// The codes of a type that mean so.
template<class KindOf>
std::set<int> codesOf(KindOf kindOf, std::uint8_t type, Kind kind) {
    std::set<int> codes;
    for (int code = 0; code <= 255; ++code) {
        if (kindOf(type, static_cast<std::uint8_t>(code)) == kind) {
            codes.insert(code);
        }
    }
    return codes;
}

TEST(RouterError, TheHopsHaveEnded) {
    EXPECT_THAT(codesOf(RouterError::kindOf4, 11, Kind::timeExceeded), testing::ElementsAre(0));
    EXPECT_THAT(codesOf(RouterError::kindOf6, 3, Kind::timeExceeded), testing::ElementsAre(0));
}

TEST(RouterError, AProhibitionIsToldFromAWayThatIsNotThere) {
    EXPECT_THAT(codesOf(RouterError::kindOf4, 3, Kind::forbidden), testing::ElementsAre(9, 10, 13));
    EXPECT_THAT(codesOf(RouterError::kindOf6, 1, Kind::forbidden), testing::ElementsAre(1));
    EXPECT_THAT(
        codesOf(RouterError::kindOf4, 3, Kind::unreachable),
        testing::ElementsAre(0, 1, 2, 3, 5, 6, 7, 8, 11, 12, 14, 15));
    EXPECT_THAT(
        codesOf(RouterError::kindOf6, 1, Kind::unreachable), testing::ElementsAre(0, 2, 3, 4, 5, 6, 7, 8));
}

TEST(RouterError, OtherTypesSayNothing) {
    for (int type = 0; type <= 255; ++type) {
        if (type != 3 && type != 11) {
            EXPECT_EQ(RouterError::kindOf4(static_cast<std::uint8_t>(type), 0), std::nullopt) << type;
        }
        if (type != 1 && type != 3) {
            EXPECT_EQ(RouterError::kindOf6(static_cast<std::uint8_t>(type), 0), std::nullopt) << type;
        }
    }
}

} // namespace
} // namespace tarnwick
