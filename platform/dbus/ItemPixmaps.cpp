#include "platform/dbus/ItemPixmaps.h"

#include <utility>

namespace tarnwick {

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

const std::vector<Pixmap>& ItemPixmaps::images(const StatusFace& face, StatusItem::PanelFace form, Ink ink) {
    Key key{.face = face, .form = form, .ink = ink};
    if (key_ != key) {
        images_.clear();
        for (const int height : heights) {
            images_.push_back(painter_.paint(face, form, height, ink));
        }
        key_ = std::move(key);
    }
    return images_;
}

} // namespace tarnwick
