// Whether there is anybody at a bus address.
#include "platform/bus/BusProbe.h"

#include "tests/platform/bus/PrivateBus.h"

#include <gtest/gtest.h>

#include <string>

namespace tarnwick {

TEST(BusProbeTest, ARunningBusIsListening) {
    PrivateBus bus;
    ASSERT_TRUE(bus.start());

    EXPECT_TRUE(mayBeListening(bus.address()));
}

TEST(BusProbeTest, ABusThatDoesNotRunIsNot) {
    const PrivateBus bus;

    EXPECT_FALSE(mayBeListening(bus.address()));
    EXPECT_FALSE(mayBeListening(""));
}

TEST(BusProbeTest, OfSeveralAddressesOneIsEnough) {
    PrivateBus bus;
    ASSERT_TRUE(bus.start());

    EXPECT_TRUE(mayBeListening("unix:path=/nowhere/at/all;" + bus.address()));
}

TEST(BusProbeTest, OptionsAndEscapedBytesArePartOfAnAddress) {
    PrivateBus bus;
    ASSERT_TRUE(bus.start());
    std::string escaped = bus.address() + ",guid=00112233445566778899aabbccddeeff";
    escaped.replace(escaped.rfind("bus,"), 3, "%62u%73");

    EXPECT_TRUE(mayBeListening(escaped));
}

TEST(BusProbeTest, APathThatNoSocketCanHaveIsNotListening) {
    EXPECT_FALSE(mayBeListening("unix:path=/" + std::string(200, 'x')));
}

TEST(BusProbeTest, WhatIsNoLocalSocketHasToBeTried) {
    EXPECT_TRUE(mayBeListening("tcp:host=localhost,port=1"));
}

} // namespace tarnwick
