// The names that a desktop gives itself.
#include "platform/xdg/PresentDesktop.h"

#include "tests/support/Variable.h"

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

void expectDesktop(const char* names, bool isGnome, bool isPlasma) {
    const test::Variable desktop("XDG_CURRENT_DESKTOP", names);
    EXPECT_EQ(PresentDesktop::isGnome(), isGnome) << names;
    EXPECT_EQ(PresentDesktop::isPlasma(), isPlasma) << names;
}

} // namespace

TEST(PresentDesktopTest, ItsNamesStandInTheOrderOfTheEnvironment) {
    const test::Variable desktop("XDG_CURRENT_DESKTOP", "Other::GNOME:");

    EXPECT_THAT(PresentDesktop::names(), testing::ElementsAre("Other", "GNOME"));
}

TEST(PresentDesktopTest, ItMayHaveNoName) {
    const test::Variable desktop("XDG_CURRENT_DESKTOP", nullptr);

    EXPECT_THAT(PresentDesktop::names(), testing::IsEmpty());
    EXPECT_FALSE(PresentDesktop::isGnome());
}

TEST(PresentDesktopTest, AnyOfItsNamesMayBeTheKnownOne) {
    expectDesktop("GNOME", true, false);
    expectDesktop("ubuntu:GNOME", true, false);
    expectDesktop("KDE", false, true);
    expectDesktop("GNOME-Flashback:Unity", false, false);
    expectDesktop("XFCE", false, false);
}

} // namespace tarnwick
