// Text that a bus daemon accepts.
#include "platform/bus/BusText.h"

#include <gtest/gtest.h>

#include <rapidcheck.h>

#include <string>

namespace tarnwick {

TEST(BusTextTest, ValidTextStaysAsItIs) {
    const std::string text = "Excellent · 23 ms ▁▂█ \u2007 \U0001F4F6 \uFFFD";

    EXPECT_EQ(validUtf8(text), text);
}

TEST(BusTextTest, EachMalformedByteIsReplaced) {
    EXPECT_EQ(validUtf8("a\xFF\xC0z"), "a\uFFFD\uFFFDz");
}

TEST(BusTextTest, NullBytesAreLeftOut) {
    EXPECT_EQ(validUtf8(std::string_view("a\0b", 3)), "ab");
}

TEST(BusTextTest, ItsResultIsAlwaysValid) {
    EXPECT_TRUE(rc::check("what is valid stays as it is", [](const std::string& bytes) {
        const std::string valid = validUtf8(bytes);
        RC_ASSERT(validUtf8(valid) == valid);
    }));
}

TEST(BusTextTest, MarkupShowsTheTextAsItIs) {
    EXPECT_EQ(asMarkup("<b>1 & 2</b>"), "&lt;b&gt;1 &amp; 2&lt;/b&gt;");
    EXPECT_EQ(asMarkup("one\ntwo"), "one\ntwo");
    EXPECT_EQ(asMarkup("one\ntwo", "<br>"), "one<br>two");
}

} // namespace tarnwick
