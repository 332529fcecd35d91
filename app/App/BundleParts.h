// What the desktop program does differently in a bundle, which brings its own toolkit.
#pragma once

#include <filesystem>

namespace tarnwick::BundleParts {

/// Before the toolkit and any thread start. The user's variables may name plug-ins of another toolkit, and on
/// Wayland the toolkit needs a folder with keyboards, though the compositor tells it all that is in there.
void prepare(const std::filesystem::path& bundle);

/// Once the toolkit has started: a system with a display and nothing else has no font.
void bringFont(const std::filesystem::path& bundle);

} // namespace tarnwick::BundleParts
