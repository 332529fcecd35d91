// Turns a status face into pixels, for panels that take images.
#pragma once

#include "platform/ports/StatusItem.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tarnwick {

/// An image in 32-bit words 0xAARRGGBB, not premultiplied, row by row from the top.
struct Pixmap {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels{};

    friend bool operator==(const Pixmap&, const Pixmap&) = default;
};

/// The color of an image. A face is a mask, and is tinted to stand out from the panel. On a plate, a
/// translucent ground of the other color, it can be read on any panel.
enum class Ink { dark, light, darkOnPlate, lightOnPlate };

/// The ink that stands out from a ground.
[[nodiscard]] constexpr Ink inkOn(bool isDarkGround) {
    return isDarkGround ? Ink::light : Ink::dark;
}

[[nodiscard]] constexpr Ink onPlate(Ink ink) {
    switch (ink) {
    case Ink::dark:
        return Ink::darkOnPlate;
    case Ink::light:
        return Ink::lightOnPlate;
    case Ink::darkOnPlate:
    case Ink::lightOnPlate:
        break;
    }
    return ink;
}

class FacePainter {
public:
    FacePainter() = default;
    FacePainter(const FacePainter&) = delete;
    FacePainter& operator=(const FacePainter&) = delete;
    virtual ~FacePainter() = default;

    /// The face in this form (not `automatic`), `height` pixels high. The square is as wide as high; the
    /// wide one as wide as it needs; the label form is the icon alone.
    [[nodiscard]] virtual Pixmap paint(
        const StatusFace& face, StatusItem::Form form, int height, Ink ink) const = 0;

    /// Width of a text in the title's font, rounded up to whole points.
    [[nodiscard]] virtual double textWidth(const std::string& text) const = 0;
};

} // namespace tarnwick
