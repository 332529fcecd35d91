#include "platform/panel/ItemPixmaps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <utility>

namespace tarnwick {

namespace {

// In points. Each size costs painting, and bytes on the bus, at every change. So there are only sizes for the
// scales of the present screens.
constexpr std::array usualHeights{16, 22, 24, 32};
constexpr int largePanel = 48;
constexpr double largestScale = 4;

// In pixels. Some panels always scale the largest image down. A smaller one would look distorted there: its
// width is rounded to whole pixels.
constexpr int minimumOfLargest = 64;

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
    // Scale 1 is always included: some toolkits leave the scaling to the display.
    std::set<int> heights(usualHeights.begin(), usualHeights.end());
    heights.insert(largePanel);
    for (const double scale : scales) {
        for (const int points : usualHeights) {
            heights.insert(static_cast<int>(std::lround(points * std::clamp(scale, 1.0, largestScale))));
        }
    }
    if (*heights.rbegin() < minimumOfLargest) {
        heights.insert(minimumOfLargest);
    }
    return {heights.begin(), heights.end()};
}

const std::vector<Pixmap>& ItemPixmaps::images(const StatusFace& face, StatusItem::Form form, Ink ink) {
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
