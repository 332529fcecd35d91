// The grid of character cells.
#include "app/Watch/Canvas.h"

#include "tests/app/Watch/CanvasRows.h"

#include <clocale>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <rapidcheck.h>

namespace tarnwick {

namespace {

/// Texts are measured by the character set of the locale.
class CanvasTest : public testing::Test {
protected:
    CanvasTest() { std::setlocale(LC_CTYPE, "C.UTF-8"); }

    ~CanvasTest() override { std::setlocale(LC_CTYPE, "C"); }

    /// One row with `text` on it.
    static std::string row(std::string_view text, int width = 40, bool ascii = false) {
        Canvas canvas({1, 40}, ascii);
        canvas.text(0, 0, width, text, TextStyle::plain);
        return rowText(canvas, 0);
    }
};

/// Every cell of a canvas with its position.
void forEachCell(const Canvas& canvas, const std::function<void(int row, int column, const Cell&)>& visit) {
    for (int row = 0; row < canvas.size().rows; ++row) {
        for (int column = 0; column < canvas.size().columns; ++column) {
            visit(row, column, canvas.at(row, column));
        }
    }
}

bool isBlank(const Canvas& canvas) {
    bool blank = true;
    forEachCell(canvas, [&](int, int, const Cell& cell) { blank = blank && cell == Cell{}; });
    return blank;
}

} // namespace

TEST_F(CanvasTest, StartsBlank) {
    const Canvas canvas({3, 5}, false);

    EXPECT_EQ(canvas.size().rows, 3);
    EXPECT_EQ(canvas.size().columns, 5);
    EXPECT_TRUE(isBlank(canvas));
}

TEST_F(CanvasTest, ACharacterHasItsPlaceAndInk) {
    Canvas canvas({3, 5}, false);

    canvas.put(2, 4, U'x', TextStyle::good);

    EXPECT_EQ(canvas.at(2, 4), (Cell{U'x', TextStyle::good}));
}

TEST_F(CanvasTest, WhatLiesOutsideIsCutOff) {
    constexpr int farOut = std::numeric_limits<int>::max();
    Canvas canvas({2, 3}, false);

    for (const auto& [row, column] :
         {std::pair(-1, 0), {2, 0}, {0, -1}, {0, 3}, {farOut, 0}, {0, farOut}, {-farOut, -farOut}}) {
        canvas.put(row, column, U'x', TextStyle::plain);
    }
    canvas.text(-1, 0, 3, "abc", TextStyle::plain);
    canvas.text(2, 0, 3, "abc", TextStyle::plain);

    EXPECT_TRUE(isBlank(canvas));
}

TEST_F(CanvasTest, ATextOverTheEdgeLosesWhatIsOutside) {
    Canvas canvas({1, 5}, false);

    canvas.text(0, -2, 10, "abcdefghij", TextStyle::plain);

    EXPECT_EQ(rowText(canvas, 0), "cdefg");
}

TEST_F(CanvasTest, AScreenWithoutRowsOrColumnsTakesEverythingSilently) {
    for (const ScreenSize size :
         {ScreenSize{0, 0}, ScreenSize{0, 10}, ScreenSize{10, 0}, ScreenSize{-3, -3}}) {
        Canvas canvas(size, false);
        canvas.put(0, 0, U'x', TextStyle::plain);
        canvas.text(0, 0, 10, "text", TextStyle::plain);
        canvas.textRight(0, 0, 10, "text", TextStyle::plain);
        EXPECT_TRUE(isBlank(canvas));
    }
}

// Widths.

TEST_F(CanvasTest, ATextThatFitsExactlyIsWrittenInFull) {
    EXPECT_EQ(row("12345", 5), "12345");
}

TEST_F(CanvasTest, ALongerTextEndsInAnEllipsis) {
    EXPECT_EQ(row("123456", 5), "1234…");
    EXPECT_EQ(row("123456", 1), "…");
}

TEST_F(CanvasTest, ATextWithoutRoomIsLeftOut) {
    EXPECT_EQ(row("123456", 0), "");
    EXPECT_EQ(row("123456", -5), "");
}

TEST_F(CanvasTest, ATextMayEndAtItsRightEdge) {
    Canvas canvas({1, 10}, false);

    canvas.textRight(0, 2, 6, "abc", TextStyle::plain);

    EXPECT_EQ(rowText(canvas, 0), "     abc");
}

TEST_F(CanvasTest, ALongerTextAtTheRightEdgeEndsInAnEllipsisToo) {
    Canvas canvas({1, 10}, false);

    canvas.textRight(0, 2, 4, "abcdefgh", TextStyle::plain);

    EXPECT_EQ(rowText(canvas, 0), "  abc…");
}

TEST_F(CanvasTest, AWideCharacterTakesTwoColumns) {
    Canvas canvas({1, 6}, false);

    canvas.text(0, 0, 6, "日本x", TextStyle::strong);

    EXPECT_EQ(canvas.widthOf("日本x"), 5);
    EXPECT_EQ(canvas.at(0, 0), (Cell{U'日', TextStyle::strong}));
    EXPECT_EQ(canvas.at(0, 1), (Cell{0, TextStyle::strong}));
    EXPECT_EQ(canvas.at(0, 4), (Cell{U'x', TextStyle::strong}));
    EXPECT_EQ(rowText(canvas, 0), "日本x");
}

TEST_F(CanvasTest, AWideCharacterThatDoesNotFitBeforeTheEllipsisIsLeftOut) {
    EXPECT_EQ(row("日本語", 4), "日…");
    EXPECT_EQ(row("日本語", 5), "日本…");
}

TEST_F(CanvasTest, NoHalfOfAWideCharacterIsShownAtTheEdge) {
    Canvas right({1, 3}, false);
    right.text(0, 0, 10, "日本", TextStyle::plain);
    EXPECT_EQ(rowText(right, 0), "日");
    EXPECT_EQ(right.at(0, 2).glyph, U' ');

    Canvas left({1, 3}, false);
    left.text(0, -1, 10, "日x", TextStyle::plain);
    EXPECT_EQ(left.at(0, 0).glyph, U' ');
    EXPECT_EQ(left.at(0, 1).glyph, U'x');
}

TEST_F(CanvasTest, MarksThatJoinTheCharacterBeforeThemTakeNoColumn) {
    const Canvas canvas({1, 6}, false);

    EXPECT_EQ(canvas.widthOf("e\u0301x"), 2);
    EXPECT_EQ(row("e\u0301x"), "ex");
}

// Texts that a terminal could misread.

struct Dangerous {
    std::string name;
    std::string text;
    std::string shown;
};

class CanvasText : public CanvasTest, public testing::WithParamInterface<Dangerous> {};

TEST_P(CanvasText, IsShownWithMarksForWhatATerminalCouldMisread) {
    EXPECT_EQ(row(GetParam().text), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(
    ControlCharacters, CanvasText,
    testing::Values(
        Dangerous{"Escape", "a\x1B[2Jb", "a\uFFFD[2Jb"}, Dangerous{"LineBreak", "a\nb", "a\uFFFDb"},
        Dangerous{"Tabulator", "a\tb", "a\uFFFDb"}, Dangerous{"Null", std::string("a\0b", 3), "a\uFFFDb"},
        Dangerous{
            "Delete",
            "a\x7F"
            "b",
            "a\uFFFDb"},
        Dangerous{"ControlSequenceIntroducer", "a\u009B2Jb", "a\uFFFD2Jb"}),
    [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(
    MalformedUtf8, CanvasText,
    testing::Values(
        Dangerous{"Latin1", "caf\xE9", "caf\uFFFD"}, Dangerous{"OverlongEscape", "\xC0\x9B", "\uFFFD\uFFFD"},
        Dangerous{"ValidOfEachLength", "aä€😀", "aä€😀"}),
    [](const auto& test) { return test.param.name; });

TEST_F(CanvasTest, NoTextWritesAControlCharacterOrLeavesItsPlace) {
    EXPECT_TRUE(rc::check("any bytes stay harmless and in their width", [](const std::string& bytes) {
        const int width = *rc::gen::inRange(-1, 12);
        const int column = *rc::gen::inRange(0, 8);
        Canvas canvas({3, 20}, *rc::gen::arbitrary<bool>());
        canvas.text(1, column, width, bytes, TextStyle::plain);
        forEachCell(canvas, [&](int row, int at, const Cell& cell) {
            RC_ASSERT(cell.glyph == 0 || cell.glyph >= U' ');
            RC_ASSERT(cell.glyph < 0x7F || cell.glyph >= 0xA0);
            const bool isInside = row == 1 && at >= column && at < column + width;
            RC_ASSERT(isInside || cell == Cell{});
        });
    }));
}

// Terminals without UTF-8.

TEST_F(CanvasTest, WhereOnlyAsciiIsShownEachCharacterHasARelative) {
    EXPECT_EQ(
        row("Can’t find “host” – Connecting… 1.1.1.1 · x\u00A0y", 60, true),
        "Can't find \"host\" - Connecting. 1.1.1.1");
    EXPECT_EQ(row("a · b\u202F1", 40, true), "a - b 1");
    EXPECT_EQ(row("日ä", 40, true), "??");
}

TEST_F(CanvasTest, WhereOnlyAsciiIsShownACutTextEndsInAFullStop) {
    EXPECT_EQ(row("123456", 5, true), "1234.");
}

TEST_F(CanvasTest, WhereOnlyAsciiIsShownNoTextWritesAnythingElse) {
    EXPECT_TRUE(rc::check("only printable ASCII is written", [](const std::string& bytes) {
        for (const char letter : row(bytes, 30, true)) {
            RC_ASSERT(letter >= ' ' && letter < 0x7F);
        }
    }));
}

TEST_F(CanvasTest, ARowIsReadWithoutTheBlanksAtItsEnd) {
    EXPECT_EQ(row("  a b  "), "  a b");
    EXPECT_EQ(row("   "), "");
}

} // namespace tarnwick
