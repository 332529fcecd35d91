// Desktop entries as text: what is read, what is changed, and what stays as it was.
#include "platform/xdg/DesktopEntry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::Optional;

constexpr auto rich = R"(# made by hand
[Desktop Entry]
Name=Tarnwick
Name[de]=Tarnwick, die Anzeige
# the old place
Exec=/old/tarnwick
X-Foreign=kept; with \\ all

[Desktop Action New]
Exec=/old/tarnwick --new
Hidden=true
)";

DesktopEntry parsed(const std::string& text) {
    auto entry = DesktopEntry::parse(text);
    EXPECT_TRUE(entry) << text;
    return entry.value_or(DesktopEntry());
}

DesktopEntry withLine(const std::string& line) {
    return parsed("[Desktop Entry]\n" + line + "\n");
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
}

} // namespace

TEST(DesktopEntryTest, AnUnchangedEntryKeepsItsText) {
    EXPECT_EQ(parsed(rich).text(), rich);
}

TEST(DesktopEntryTest, AChangedKeyChangesItsLineAlone) {
    DesktopEntry entry = parsed(rich);

    entry.set("Exec", "/new/tarnwick");

    EXPECT_EQ(entry.text(), replaced(rich, "Exec=/old/tarnwick\n", "Exec=/new/tarnwick\n"));
}

TEST(DesktopEntryTest, ANewKeyComesLastInItsGroup) {
    DesktopEntry entry = parsed(rich);

    entry.setBoolean("Hidden", true);

    EXPECT_EQ(entry.text(), replaced(rich, "with \\\\ all\n", "with \\\\ all\nHidden=true\n"));
}

TEST(DesktopEntryTest, ARemovedKeyTakesItsLineAlone) {
    DesktopEntry entry = parsed(rich);

    entry.remove("Name");

    EXPECT_EQ(entry.text(), replaced(rich, "Name=Tarnwick\n", ""));
}

TEST(DesktopEntryTest, KeysOfOtherGroupsAreNeitherReadNorRemoved) {
    DesktopEntry entry = parsed(rich);
    EXPECT_EQ(entry.boolean("Hidden"), std::nullopt);

    entry.remove("Hidden");

    EXPECT_EQ(entry.text(), rich);
}

TEST(DesktopEntryTest, OfAKeyThatStandsTwiceTheLastHoldsAndIsChanged) {
    DesktopEntry entry = parsed("[Desktop Entry]\nHidden=true\nHidden=false\n");
    EXPECT_THAT(entry.boolean("Hidden"), Optional(false));

    entry.setBoolean("Hidden", true);

    EXPECT_EQ(entry.text(), "[Desktop Entry]\nHidden=true\nHidden=true\n");
}

TEST(DesktopEntryTest, SpacesAroundTheEqualSignDoNotCount) {
    EXPECT_THAT(withLine("Hidden = true ").boolean("Hidden"), Optional(true));
}

TEST(DesktopEntryTest, LinesThatEndInACarriageReturnAreRead) {
    EXPECT_THAT(parsed("[Desktop Entry]\r\nHidden=true\r\n").boolean("Hidden"), Optional(true));
}

TEST(DesktopEntryTest, ATextWithoutALastLineBreakIsWhole) {
    EXPECT_THAT(parsed("[Desktop Entry]\nExec=a").value("Exec"), Optional(std::string("a")));
}

TEST(DesktopEntryTest, BooleansAreTrueOrFalse) {
    EXPECT_THAT(withLine("Hidden=true").boolean("Hidden"), Optional(true));
    EXPECT_THAT(withLine("Hidden=false").boolean("Hidden"), Optional(false));
    EXPECT_EQ(withLine("Hidden=yes").boolean("Hidden"), std::nullopt);
    EXPECT_EQ(withLine("Hidden=").boolean("Hidden"), std::nullopt);
}

TEST(DesktopEntryTest, EscapesAreRead) {
    EXPECT_THAT(
        withLine(R"(Comment=\sa\tb\nc\\d\re)").value("Comment"), Optional(std::string(" a\tb\nc\\d\re")));
}

TEST(DesktopEntryTest, AnUnknownEscapeReadsAsAbsent) {
    EXPECT_EQ(withLine(R"(Exec="a\$b")").value("Exec"), std::nullopt);
    EXPECT_EQ(withLine(R"(Exec=a\)").value("Exec"), std::nullopt);
}

TEST(DesktopEntryTest, ListsAreReadWithAndWithoutTheLastSemicolon) {
    EXPECT_THAT(
        withLine("OnlyShowIn=GNOME;XFCE;").list("OnlyShowIn"), Optional(ElementsAre("GNOME", "XFCE")));
    EXPECT_THAT(withLine("OnlyShowIn=GNOME;XFCE").list("OnlyShowIn"), Optional(ElementsAre("GNOME", "XFCE")));
    EXPECT_THAT(withLine("OnlyShowIn=").list("OnlyShowIn"), Optional(ElementsAre()));
    EXPECT_EQ(withLine("").list("OnlyShowIn"), std::nullopt);
}

TEST(DesktopEntryTest, ASemicolonIsWrittenAsItIs) {
    DesktopEntry entry;

    entry.set("Comment", "A;B");

    EXPECT_EQ(entry.text(), "[Desktop Entry]\nComment=A;B\n");
}

TEST(DesktopEntryTest, AnyValueIsReadBackAsItWasSet) {
    EXPECT_TRUE(rc::check("a value comes back", [] {
        const auto value =
            *rc::gen::container<std::string>(rc::gen::elementOf(std::string("ab \\;=\"$`%#[]\n\t\rä")));
        const bool endsInWhiteSpace =
            !value.empty() && std::string_view(" \n\t\r").find(value.back()) != std::string_view::npos;
        RC_PRE(!endsInWhiteSpace); // it would be lost
        DesktopEntry entry;
        entry.set("Key", value);
        const auto again = DesktopEntry::parse(entry.text());
        RC_ASSERT(again.has_value());
        RC_ASSERT(again->value("Key") == std::optional(value));
    }));
}

TEST(DesktopEntryTest, WhateverIsInTheFileSettingAndRemovingAKeyLeavesItAsItWas) {
    EXPECT_TRUE(rc::check("the rest stays", [] {
        const auto pieces = *rc::gen::container<std::vector<std::string>>(rc::gen::element<std::string>(
            "\n", "# remark", "Exec", "=", "a b", "\xff\xc3", " ", "[Desktop Entry]", "[Other]", "\r", "["));
        std::string text = "[Desktop Entry]\n";
        for (const std::string& piece : pieces) {
            text += piece;
        }
        auto entry = DesktopEntry::parse(text);
        RC_PRE(entry.has_value());
        const std::string whole = text.ends_with('\n') ? text : text + "\n";
        RC_ASSERT(entry->text() == whole);

        entry->set("Fresh", "value");
        RC_ASSERT(entry->value("Fresh") == std::optional<std::string>("value"));
        entry->remove("Fresh");

        RC_ASSERT(entry->text() == whole);
    }));
}

class NoDesktopEntry : public testing::TestWithParam<std::string> {};

TEST_P(NoDesktopEntry, IsNotRead) {
    EXPECT_EQ(DesktopEntry::parse(GetParam()), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    AllKinds, NoDesktopEntry,
    testing::Values(
        "", "# nothing but a remark\n", "Exec=tarnwick\n", "[Desktop Entry]\nExec\n",
        "[Desktop Entry]\n=tarnwick\n", "[Desktop Entry\nExec=tarnwick\n",
        "[Desktop Action New]\nExec=tarnwick\n[Desktop Entry]\nExec=tarnwick\n", std::string("\0\0\0\0", 4)));

} // namespace tarnwick
