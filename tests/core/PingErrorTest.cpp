// What people read when pinging could not start.
#include "core/PingError.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

TEST(PingError, OfResolutionSaysThatTheHostCouldNotBeResolved) {
    EXPECT_EQ(PingError::resolution("no such name").message(), "Could not resolve host: no such name");
}

TEST(PingError, OfASocketSaysThatItCouldNotBeOpened) {
    EXPECT_EQ(
        PingError::socket("Permission denied").message(), "Could not open ICMP socket: Permission denied");
}

TEST(PingError, IsEqualOnlyInKindAndText) {
    EXPECT_EQ(PingError::socket("a"), PingError::socket("a"));
    EXPECT_NE(PingError::socket("a"), PingError::socket("b"));
    EXPECT_NE(PingError::socket("a"), PingError::resolution("a"));
}

} // namespace
} // namespace tarnwick
