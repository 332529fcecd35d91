// The whole image of the status item where a panel shows wide ones: an icon and a line of text.
#pragma once

#include "app/StatusItemController/Painting/MenuBarIcon.h"

#include <QFont>
#include <QPointF>

#include <optional>

/// Main thread, once there is an application object: it knows the fonts.
namespace tarnwick::MenuBarContent {

inline constexpr double height = MenuBarIcon::height;
inline constexpr double textGap = 5;  ///< between icon and text
inline constexpr double baseline = 3; ///< of the text, above the lower edge

/// The desktop's font, of a size for these images: 13 points high at scale 1.
[[nodiscard]] const QFont& font();
/// Width kept for the icon: that of the widest one.
[[nodiscard]] double iconSlot();
/// Width of a text, all digits counting as equally wide, rounded up to whole points.
[[nodiscard]] double lineWidth(const QString& text);

/// Where the parts of a composed image lie, in points, y downward.
struct Layout {
    QSizeF size{};
    QPointF iconOrigin{};
    QPointF textOrigin{}; ///< on the baseline
};

/// `iconSize`: of the icon, if there is one.
[[nodiscard]] Layout layout(std::optional<QSizeF> iconSize, double textSlot);

/// `icon` may be absent. `textSlot` is at least as wide as the title.
[[nodiscard]] TemplateImagePtr image(const TemplateImagePtr& icon, const QString& title, double textSlot);

} // namespace tarnwick::MenuBarContent
