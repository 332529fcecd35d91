// The images of a status item, as its panel gets them.
#pragma once

#include "platform/FacePainter.h"
#include "platform/StatusItem.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace tarnwick {

/// The pixels as a panel reads them: alpha, red, green, blue of each, in this order on every machine.
[[nodiscard]] std::vector<std::uint8_t> networkBytes(const Pixmap& pixmap);

/// Paints when asked, and not twice the same. Main thread.
class ItemPixmaps {
public:
    /// In pixels: of the panels that are usual, at scales from 1 to 2. A panel takes the next larger one.
    static constexpr std::array<int, 7> heights{16, 22, 24, 32, 44, 48, 64};

    /// `painter` outlives it.
    explicit ItemPixmaps(const FacePainter& painter) : painter_(painter) {}

    /// One for each height. `face` without what the form does not show is painted less often.
    [[nodiscard]] const std::vector<Pixmap>& images(
        const StatusFace& face, StatusItem::PanelFace form, Ink ink);

private:
    struct Key {
        StatusFace face;
        StatusItem::PanelFace form;
        Ink ink;

        friend bool operator==(const Key&, const Key&) = default;
    };

    const FacePainter& painter_;
    std::optional<Key> key_;
    std::vector<Pixmap> images_;
};

} // namespace tarnwick
