// The rows of a canvas as texts.
#pragma once

#include "app/Watch/Canvas.h"
#include "core/Utf8.h"

namespace tarnwick {

/// One row as UTF-8, without the blanks at its end.
inline std::string rowText(const Canvas& canvas, int row) {
    std::string text;
    for (int column = 0; column < canvas.size().columns; ++column) {
        // A wide character has its second half in the next cell.
        if (const char32_t glyph = canvas.at(row, column).glyph; glyph != 0) {
            Utf8::append(text, glyph);
        }
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

} // namespace tarnwick
