// Any text, and texts of what stands around hosts.
#include "core/HostText.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <string>

namespace tarnwick {

namespace {

rc::Gen<std::string> texts() {
    return rc::gen::oneOf(
        rc::gen::arbitrary<std::string>(), rc::gen::container<std::string>(rc::gen::elementOf(
                                               std::string("://@[]%.?# \taeF0129-_\xC3\xBC\x1B"))));
}

} // namespace

TEST(HostTextProperty, AHostIsReadBackAsItself) {
    EXPECT_TRUE(rc::check("what was found is found again", [] {
        const auto found = hostIn(*texts());
        if (const auto* const host = std::get_if<std::string>(&found)) {
            RC_ASSERT(hostIn(*host) == found);
            RC_ASSERT(!host->empty() && host->size() <= longestHost);
        }
    }));
}

} // namespace tarnwick
