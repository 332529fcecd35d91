// Paints status faces for panels that take images.
#pragma once

#include "platform/ports/FacePainter.h"

namespace tarnwick {

/// Needs the application object, for its fonts. Main thread.
class QtFacePainter final : public FacePainter {
public:
    [[nodiscard]] Pixmap paint(
        const StatusFace& face, StatusItem::Form form, int height, Ink ink) const override;
    [[nodiscard]] double textWidth(const std::string& text) const override;
};

} // namespace tarnwick
