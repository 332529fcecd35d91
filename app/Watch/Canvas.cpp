#include "app/Watch/Canvas.h"

#include "core/Text.h"
#include "core/Utf8.h"

#include <algorithm>
#include <cwchar>
#include <numeric>

namespace tarnwick {

namespace {

constexpr char32_t ellipsis = U'…';

/// Columns that a character takes: 0 for one that joins the character before it.
int columnsOf(char32_t glyph) {
    const int width = ::wcwidth(static_cast<wchar_t>(glyph));
    return width < 0 ? 1 : width;
}

char32_t nearestAscii(char32_t glyph) {
    switch (glyph) {
    case U'’':
        return U'\'';
    case U'“':
    case U'”':
        return U'"';
    case U'…':
        return U'.';
    case U'–':
    case U'—':
    case U'·':
        return U'-';
    case U'\u00A0':
    case U'\u202F':
        return U' ';
    default:
        return glyph < 0x80 ? glyph : U'?';
    }
}

int columnsOf(const std::u32string& glyphs) {
    return std::accumulate(
        glyphs.begin(), glyphs.end(), 0, [](int sum, char32_t glyph) { return sum + columnsOf(glyph); });
}

} // namespace

Canvas::Canvas(ScreenSize size, bool ascii)
    : size_{std::max(size.rows, 0), std::max(size.columns, 0)},
      ascii_(ascii),
      cells_(static_cast<std::size_t>(size_.rows) * static_cast<std::size_t>(size_.columns)) {
}

void Canvas::put(int row, int column, char32_t glyph, TextStyle style) {
    if (row < 0 || row >= size_.rows || column < 0 || column >= size_.columns) {
        return;
    }
    cells_
        [static_cast<std::size_t>(row) * static_cast<std::size_t>(size_.columns)
         + static_cast<std::size_t>(column)] = {glyph, style};
}

void Canvas::text(int row, int column, int width, std::string_view text, TextStyle style) {
    std::u32string glyphs = glyphsOf(text);
    if (int columns = columnsOf(glyphs); columns > width) {
        while (!glyphs.empty() && columns > width - 1) {
            columns -= columnsOf(glyphs.back());
            glyphs.pop_back();
        }
        if (width > 0) {
            glyphs.push_back(ascii_ ? nearestAscii(ellipsis) : ellipsis);
        }
    }
    int at = column;
    for (const char32_t glyph : glyphs) {
        const int columns = columnsOf(glyph);
        if (columns == 0) {
            continue; // a cell holds one character: marks that join it are left out
        }
        const bool isCut = columns == 2 && (at < 0 || at + 2 > size_.columns);
        put(row, at, isCut ? U' ' : glyph, style);
        if (columns == 2) {
            put(row, at + 1, isCut ? U' ' : 0, style);
        }
        at += columns;
    }
}

void Canvas::textRight(int row, int column, int width, std::string_view textToPut, TextStyle style) {
    const int used = std::min(widthOf(textToPut), width);
    text(row, column + width - used, used, textToPut, style);
}

const Cell& Canvas::at(int row, int column) const {
    return cells_.at(
        static_cast<std::size_t>(row) * static_cast<std::size_t>(size_.columns)
        + static_cast<std::size_t>(column));
}

int Canvas::widthOf(std::string_view text) const {
    return columnsOf(glyphsOf(text));
}

std::u32string Canvas::glyphsOf(std::string_view text) const {
    std::u32string glyphs;
    while (!text.empty()) {
        char32_t glyph = Utf8::takeCharacter(text);
        if (Text::isControl(glyph) || Text::changesDirection(glyph)) {
            glyph = Utf8::replacement;
        }
        glyphs.push_back(ascii_ ? nearestAscii(glyph) : glyph);
    }
    return glyphs;
}

} // namespace tarnwick
