// Tokens with which the windows of other programs may come to the front.
#pragma once

#include <cstdint>
#include <string>

struct wl_display;
struct wl_seat;
struct wl_surface;

namespace tarnwick::Wayland {

/// What a token is asked for. All of it outlives the question.
struct TokenNeeds {
    wl_display& display;
    wl_seat& seat;
    wl_surface& surface;  ///< of the window with the keyboard
    std::uint32_t serial; ///< of the seat's latest event: the user's click or key
};

/// Asks the compositor, and waits for its answer. Empty where it has no tokens.
[[nodiscard]] std::string activationToken(const TokenNeeds& needs);

} // namespace tarnwick::Wayland
