// Paints faces that tell what was asked for.
#pragma once

#include "platform/ports/FacePainter.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace tarnwick {

/// Every character, of however many bytes, is 7 points wide. All pixels of an image are the same: dark or
/// light ink, and the bars in the lowest byte.
class FakePainter final : public FacePainter {
public:
    [[nodiscard]] Pixmap paint(
        const StatusFace& face, StatusItem::Form form, int height, Ink ink) const override {
        ++paintings;
        const int width = form == StatusItem::Form::wide ? 3 * height : height;
        const std::uint32_t color = ink == Ink::light || ink == Ink::lightOnPlate ? 0x80F4F4F0U : 0x80242420U;
        return {
            .width = width,
            .height = height,
            .pixels = std::vector<std::uint32_t>(
                static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                color + static_cast<std::uint32_t>(face.activeBars)),
        };
    }

    [[nodiscard]] double textWidth(const std::string& text) const override {
        double width = 0;
        for (const char character : text) {
            const bool startsCharacter = (static_cast<unsigned char>(character) & 0xC0U) != 0x80U;
            width += startsCharacter ? 7 : 0;
        }
        return width;
    }

    mutable int paintings = 0;
};

} // namespace tarnwick
