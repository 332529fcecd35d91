// Whose fault it is, as a report says it to people.
#include "app/Report/BlameText.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

namespace tarnwick {
namespace {

TEST(BlameText, IsTheNameOfEach) {
    const std::array<std::pair<Blame, std::string_view>, 10> cases{{
        {Blame::thisComputer, "This computer"},
        {Blame::wifi, "Wi-Fi"},
        {Blame::localNetwork, "Local network"},
        {Blame::provider, "Provider"},
        {Blame::beyondProvider, "Beyond the provider"},
        {Blame::host, "The host"},
        {Blame::nameServer, "Name server"},
        {Blame::signIn, "Sign-in page"},
        {Blame::ownLoad, "The line's own load"},
        {Blame::unclear, "Not clear"},
    }};
    for (const auto& [blame, text] : cases) {
        EXPECT_EQ(blameText(blame), text);
    }
}

} // namespace
} // namespace tarnwick
