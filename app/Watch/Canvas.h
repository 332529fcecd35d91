// A grid of character cells to draw on, without a terminal.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

/// What a text means; the terminal decides what that looks like.
enum class TextStyle { plain, strong, secondary, good, warn, bad, strongBad };

struct Cell {
    char32_t glyph = U' '; ///< 0: the second half of the wide character to its left
    TextStyle style = TextStyle::plain;

    friend bool operator==(const Cell&, const Cell&) = default;
};

struct ScreenSize {
    int rows;
    int columns;
};

/// Drawing outside of it is ignored. Texts are UTF-8; control characters and broken sequences, which a
/// terminal could misread, are replaced by a mark.
class Canvas {
public:
    /// `ascii`: the terminal shows nothing else. Other characters are replaced by similar ones.
    Canvas(ScreenSize size, bool ascii);

    void put(int row, int column, char32_t glyph, TextStyle style);
    /// At most `width` columns; a longer text ends in an ellipsis.
    void text(int row, int column, int width, std::string_view text, TextStyle style);
    /// The same, ending at `column + width`.
    void textRight(int row, int column, int width, std::string_view text, TextStyle style);

    [[nodiscard]] ScreenSize size() const { return size_; }

    [[nodiscard]] bool isAscii() const { return ascii_; }

    [[nodiscard]] const Cell& at(int row, int column) const;
    /// Columns that a text takes.
    [[nodiscard]] int widthOf(std::string_view text) const;

private:
    [[nodiscard]] std::u32string glyphsOf(std::string_view text) const;

    ScreenSize size_;
    bool ascii_;
    std::vector<Cell> cells_;
};

} // namespace tarnwick
