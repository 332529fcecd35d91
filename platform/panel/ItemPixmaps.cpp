#include "platform/panel/ItemPixmaps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <utility>

namespace tarnwick {

namespace {

// In points. Every further size costs painting and bytes on the bus at each change, which is why only the
// scales of present screens count.
constexpr std::array usualHeights{16, 22, 24, 32};
constexpr int largePanel = 48;
constexpr double largestScale = 4;

// Some panels take the largest image whatever their size. Scaled down, it keeps its proportions only when it
// is large enough for its rounding to whole pixels not to matter.
constexpr int leastLargest = 64;

} // namespace

std::vector<std::uint8_t> networkBytes(const Pixmap& pixmap) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(pixmap.pixels.size() * 4);
    for (const std::uint32_t pixel : pixmap.pixels) {
        for (const unsigned shift : {24U, 16U, 8U, 0U}) {
            bytes.push_back(static_cast<std::uint8_t>(pixel >> shift));
        }
    }
    return bytes;
}

std::vector<int> pixmapHeights(const std::vector<double>& scales) {
    // Some toolkits leave the scaling to the display: scale 1 is always there.
    std::set<int> heights(usualHeights.begin(), usualHeights.end());
    heights.insert(largePanel);
    for (const double scale : scales) {
        for (const int points : usualHeights) {
            heights.insert(static_cast<int>(std::lround(points * std::clamp(scale, 1.0, largestScale))));
        }
    }
    if (*heights.rbegin() < leastLargest) {
        heights.insert(leastLargest);
    }
    return {heights.begin(), heights.end()};
}

const std::vector<Pixmap>& ItemPixmaps::images(const StatusFace& face, StatusItem::PanelFace form, Ink ink) {
    Key key{.face = face, .form = form, .ink = ink, .heights = pixmapHeights(scales_())};
    if (key_ != key) {
        images_.clear();
        for (const int height : key.heights) {
            images_.push_back(painter_.paint(face, form, height, ink));
        }
        key_ = std::move(key);
    }
    return images_;
}

} // namespace tarnwick
