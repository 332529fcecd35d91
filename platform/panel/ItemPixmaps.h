// The status item's images, in the sizes that panels need.
#pragma once

#include "platform/ports/FacePainter.h"
#include "platform/ports/StatusItem.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace tarnwick {

/// The bytes of all pixels, in the order that panels read: alpha, red, green, blue of each.
[[nodiscard]] std::vector<std::uint8_t> networkBytes(const Pixmap& pixmap);

/// The heights of images, in pixels and in rising order, that common panels on screens of these scales draw
/// unscaled. Panels of other sizes scale the next larger image down.
[[nodiscard]] std::vector<int> pixmapHeights(const std::vector<double>& scales);

/// Paints on request, and keeps the latest images for the next request. Main thread.
class ItemPixmaps {
public:
    /// The scales of the screens at present.
    using Scales = std::function<std::vector<double>()>;

    /// `painter` outlives it.
    ItemPixmaps(const FacePainter& painter, Scales scales) : painter_(painter), scales_(std::move(scales)) {}

    /// One image for each height. Any change of `face` paints again: pass only what the form shows.
    [[nodiscard]] const std::vector<Pixmap>& images(const StatusFace& face, StatusItem::Form form, Ink ink);

private:
    struct Key {
        StatusFace face;
        StatusItem::Form form;
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
