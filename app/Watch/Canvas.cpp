#include "app/Watch/Canvas.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <numeric>

namespace tarnwick {

namespace {

constexpr char32_t replacement = U'\uFFFD';
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

int followingBytes(unsigned char first) {
    if (first >= 0xF0) {
        return 3;
    }
    return first >= 0xE0 ? 2 : 1;
}

/// Takes the first character off a UTF-8 text; the replacement mark for a byte that begins none.
char32_t takeCharacter(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    if (first < 0x80) {
        return first;
    }
    const int following = followingBytes(first);
    if (first < 0xC2 || first > 0xF4 || text.size() < static_cast<std::size_t>(following)) {
        return replacement;
    }
    char32_t character = first & (0x3FU >> following);
    for (int index = 0; index < following; ++index) {
        const auto byte = static_cast<unsigned char>(text[static_cast<std::size_t>(index)]);
        if ((byte & 0xC0) != 0x80) {
            return replacement;
        }
        character = character << 6 | (byte & 0x3FU);
    }
    text.remove_prefix(static_cast<std::size_t>(following));
    constexpr std::array<char32_t, 4> smallest{0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    const bool isOverlong = character < smallest.at(static_cast<std::size_t>(following));
    return isSurrogate || isOverlong || character > 0x10FFFF ? replacement : character;
}

bool isControl(char32_t glyph) {
    return glyph < 0x20 || (glyph >= 0x7F && glyph < 0xA0);
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

void Canvas::put(int row, int column, char32_t glyph, Ink ink) {
    if (row < 0 || row >= size_.rows || column < 0 || column >= size_.columns) {
        return;
    }
    cells_
        [static_cast<std::size_t>(row) * static_cast<std::size_t>(size_.columns)
         + static_cast<std::size_t>(column)] = {glyph, ink};
}

void Canvas::text(int row, int column, int width, std::string_view text, Ink ink) {
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
        put(row, at, isCut ? U' ' : glyph, ink);
        if (columns == 2) {
            put(row, at + 1, isCut ? U' ' : 0, ink);
        }
        at += columns;
    }
}

void Canvas::textRight(int row, int column, int width, std::string_view textToPut, Ink ink) {
    const int used = std::min(widthOf(textToPut), width);
    text(row, column + width - used, used, textToPut, ink);
}

const Cell& Canvas::at(int row, int column) const {
    return cells_.at(
        static_cast<std::size_t>(row) * static_cast<std::size_t>(size_.columns)
        + static_cast<std::size_t>(column));
}

std::string Canvas::rowText(int row) const {
    std::string text;
    for (int column = 0; column < size_.columns; ++column) {
        const char32_t glyph = at(row, column).glyph;
        if (glyph == 0) {
            continue;
        }
        if (glyph < 0x80) {
            text += static_cast<char>(glyph);
        } else if (glyph < 0x800) {
            text += static_cast<char>(0xC0 | glyph >> 6);
            text += static_cast<char>(0x80 | (glyph & 0x3F));
        } else if (glyph < 0x10000) {
            text += static_cast<char>(0xE0 | glyph >> 12);
            text += static_cast<char>(0x80 | (glyph >> 6 & 0x3F));
            text += static_cast<char>(0x80 | (glyph & 0x3F));
        } else {
            text += static_cast<char>(0xF0 | glyph >> 18);
            text += static_cast<char>(0x80 | (glyph >> 12 & 0x3F));
            text += static_cast<char>(0x80 | (glyph >> 6 & 0x3F));
            text += static_cast<char>(0x80 | (glyph & 0x3F));
        }
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

int Canvas::widthOf(std::string_view text) const {
    return columnsOf(glyphsOf(text));
}

std::u32string Canvas::glyphsOf(std::string_view text) const {
    std::u32string glyphs;
    while (!text.empty()) {
        char32_t glyph = takeCharacter(text);
        if (isControl(glyph)) {
            glyph = replacement;
        }
        glyphs.push_back(ascii_ ? nearestAscii(glyph) : glyph);
    }
    return glyphs;
}

} // namespace tarnwick
