// The images of a status item, as its panel gets them.
#pragma once

#include "platform/ports/FacePainter.h"
#include "platform/ports/StatusItem.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace tarnwick {

/// The pixels as a panel reads them: alpha, red, green, blue of each, in this order on every machine.
[[nodiscard]] std::vector<std::uint8_t> networkBytes(const Pixmap& pixmap);

/// Heights in pixels, rising, of the images that usual panels draw without scaling them on screens of these
/// scales. A panel of another size takes the next larger one.
[[nodiscard]] std::vector<int> pixmapHeights(const std::vector<double>& scales);

/// Paints when asked, and not twice the same. Main thread.
class ItemPixmaps {
public:
    /// The scales of the screens at present.
    using Scales = std::function<std::vector<double>()>;

    /// `painter` outlives it.
    ItemPixmaps(const FacePainter& painter, Scales scales) : painter_(painter), scales_(std::move(scales)) {}

    /// One for each height. `face` without what the form does not show is painted less often.
    [[nodiscard]] const std::vector<Pixmap>& images(
        const StatusFace& face, StatusItem::PanelFace form, Ink ink);

private:
    struct Key {
        StatusFace face;
        StatusItem::PanelFace form;
        Ink ink;
        std::vector<int> heights;

        friend bool operator==(const Key&, const Key&) = default;
    };

    const FacePainter& painter_;
    Scales scales_;
    std::optional<Key> key_;
    std::vector<Pixmap> images_;
};

} // namespace tarnwick
