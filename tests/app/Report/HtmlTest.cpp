// The pieces that a page is written of.
#include "app/Report/Html.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

namespace tarnwick {
namespace {

TEST(Html, EscapesWhatIsMarkupAndReplacesWhatCannotBeShown) {
    const std::array<std::pair<std::string, std::string>, 9> cases{{
        {"one.example", "one.example"},
        {"bücher.example", "bücher.example"},
        {"<script>", "&lt;script&gt;"},
        {"a & b &amp; c", "a &amp; b &amp;amp; c"},
        {R"(say "it's")", "say &quot;it's&quot;"},
        {"]]>", "]]&gt;"},
        {std::string("\0\t\n\x1b[31m\x7f", 9), "????[31m?"},
        {"wlan\xff\xc3", "wlan\uFFFD\uFFFD"},
        {"a\u202Eb\u0085", "a?b?"},
    }};
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(Html::escaped(text), expected);
    }
}

TEST(Html, AttributesAreEscapedAndElementsAreNot) {
    EXPECT_EQ(Html::attribute("title", "\"><b>"), R"( title="&quot;&gt;&lt;b&gt;")");
    EXPECT_EQ(Html::attribute("x", 12.345), R"( x="12.3")");
    EXPECT_EQ(Html::element("p", R"( class="a")", "<b>1</b>"), R"(<p class="a"><b>1</b></p>)");
    EXPECT_EQ(Html::element("p", ""), "<p></p>");
    EXPECT_EQ(Html::emptyElement("meta", R"( charset="utf-8")"), R"(<meta charset="utf-8"/>)");
}

TEST(Html, ShortensBetweenCharacters) {
    EXPECT_EQ(Html::shortened("abcd", 4), "abcd");
    EXPECT_EQ(Html::shortened("abcde", 4), "abcd…");
    EXPECT_EQ(Html::shortened("abcü", 4), "abc…");
    EXPECT_EQ(Html::shortened("ab☃d", 4), "ab…");
    EXPECT_EQ(Html::shortened("a☃bc", 4), "a☃…");
    EXPECT_EQ(Html::shortened("\x80\x80\x80", 2), "…");
}

} // namespace
} // namespace tarnwick
