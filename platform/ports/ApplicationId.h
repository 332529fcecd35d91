// The one name by which desktops know the program: on the bus, of its entry, of its icon.
#pragma once

namespace tarnwick {

inline constexpr auto applicationId = "org.tarnwick.tarnwick";

} // namespace tarnwick
