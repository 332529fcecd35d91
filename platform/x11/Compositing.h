// Whether windows can be translucent here.
#pragma once

namespace tarnwick::Compositing {

/// Asked anew each time: a compositor may come and go.
[[nodiscard]] bool isAvailable();

} // namespace tarnwick::Compositing
