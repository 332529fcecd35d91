// What the files of this folder share: a connection of our own, replies that are freed, atoms by name.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

struct xcb_connection_t;
struct xcb_screen_t;

namespace tarnwick::X11 {

struct Free {
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory): it is from malloc
    void operator()(void* memory) const { std::free(memory); }
};

/// A reply or an event; null when there is none.
template<class Reply>
using ReplyPtr = std::unique_ptr<Reply, Free>;

struct Disconnect {
    void operator()(xcb_connection_t* connection) const;
};

using ConnectionPtr = std::unique_ptr<xcb_connection_t, Disconnect>;

/// Connects to the display that `DISPLAY` names. Null when that fails. A connection of our own: the toolkit
/// takes all events that arrive on its connection.
[[nodiscard]] ConnectionPtr connect();

/// The display's first screen.
[[nodiscard]] const xcb_screen_t& firstScreen(xcb_connection_t& connection);

/// The atom of this name; 0 (`XCB_ATOM_NONE`) when no program on the display has used the name yet.
[[nodiscard]] std::uint32_t atomNamed(xcb_connection_t& connection, std::string_view name);

/// The kind of an event, without the bit that marks events sent by other programs.
[[nodiscard]] constexpr std::uint8_t eventType(std::uint8_t responseType) {
    constexpr std::uint8_t typeBits = 0x7F;
    return responseType & typeBits;
}

} // namespace tarnwick::X11
