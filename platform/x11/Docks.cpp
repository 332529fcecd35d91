#include "platform/x11/Docks.h"

#include "platform/x11/X11Connection.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <optional>
#include <span>
#include <utility>
#include <xcb/xcb.h>

namespace tarnwick::X11 {

namespace {

constexpr std::size_t edges = 4;
constexpr std::uint32_t mostValues = 4096; ///< of one property that are read

using Geometry = ReplyPtr<xcb_get_geometry_reply_t>;
using Corner = ReplyPtr<xcb_translate_coordinates_reply_t>;
using Property = ReplyPtr<xcb_get_property_reply_t>;

/// From a first pixel to the one behind the last.
struct Range {
    std::int64_t begin;
    std::int64_t end;

    [[nodiscard]] bool meets(Range other) const { return begin < other.end && other.begin < end; }
};

Range across(const Area& area) {
    return {.begin = area.x, .end = std::int64_t{area.x} + area.width};
}

Range down(const Area& area) {
    return {.begin = area.y, .end = std::int64_t{area.y} + area.height};
}

/// Without what a strut keeps clear along one axis: `low` pixels at the beginning of the desktop and `high`
/// at its end. A strut that would leave nothing is none.
Range without(std::uint32_t low, std::uint32_t high, Range monitor, Range desktop) {
    const Range left{
        .begin = std::max(monitor.begin, desktop.begin + low),
        .end = std::min(monitor.end, desktop.end - high)};
    return left.begin < left.end ? left : monitor;
}

/// The pixels that a strut keeps clear at an edge, as far as that part of the edge is the monitor's.
std::uint32_t keptAt(std::size_t edge, const Strut& strut, Range monitor) {
    const std::size_t range = edges + 2 * edge;
    const Range kept{.begin = strut.at(range), .end = std::int64_t{strut.at(range + 1)} + 1};
    return monitor.meets(kept) ? strut.at(edge) : 0;
}

Area reduced(const Area& monitor, const Area& desktop, const Strut& strut) {
    constexpr std::size_t left = 0;
    constexpr std::size_t right = 1;
    constexpr std::size_t top = 2;
    constexpr std::size_t bottom = 3;
    const Range x = without(
        keptAt(left, strut, down(monitor)), keptAt(right, strut, down(monitor)), across(monitor),
        across(desktop));
    const Range y = without(
        keptAt(top, strut, across(monitor)), keptAt(bottom, strut, across(monitor)), down(monitor),
        down(desktop));
    return {
        .x = static_cast<int>(x.begin),
        .y = static_cast<int>(y.begin),
        .width = static_cast<int>(x.end - x.begin),
        .height = static_cast<int>(y.end - y.begin)};
}

std::span<const std::uint32_t> valuesOf(const Property& property) {
    constexpr std::uint8_t bits = 32;
    if (!property || property->format != bits) {
        return {};
    }
    return {static_cast<const std::uint32_t*>(xcb_get_property_value(property.get())), property->value_len};
}

xcb_get_property_cookie_t ask(xcb_connection_t& connection, xcb_window_t window, xcb_atom_t name) {
    return xcb_get_property(&connection, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, mostValues);
}

/// The old form, `_NET_WM_STRUT`, has no parts of edges: it stands for all of each.
std::optional<Strut> strutOf(const Property& partial, const Property& old) {
    Strut strut{};
    if (const auto values = valuesOf(partial); values.size() == strut.size()) {
        std::ranges::copy(values, strut.begin());
        return strut;
    }
    if (const auto values = valuesOf(old); values.size() == edges) {
        std::ranges::copy(values, strut.begin());
        for (std::size_t edge = 0; edge < edges; ++edge) {
            strut.at(edges + 2 * edge + 1) = std::numeric_limits<std::uint32_t>::max();
        }
        return strut;
    }
    return std::nullopt;
}

/// All questions about a window. They are asked before the first answer is waited for.
struct Questions {
    xcb_get_property_cookie_t partial;
    xcb_get_property_cookie_t old;
    xcb_get_geometry_cookie_t geometry;
    xcb_translate_coordinates_cookie_t corner;
};

std::optional<Dock> answered(xcb_connection_t& connection, const Questions& questions) {
    const Property partial(xcb_get_property_reply(&connection, questions.partial, nullptr));
    const Property old(xcb_get_property_reply(&connection, questions.old, nullptr));
    const Geometry geometry(xcb_get_geometry_reply(&connection, questions.geometry, nullptr));
    const Corner corner(xcb_translate_coordinates_reply(&connection, questions.corner, nullptr));
    const std::optional<Strut> strut = strutOf(partial, old);
    if (!strut || !geometry || !corner) {
        return std::nullopt; // not a dock, or gone by now
    }
    const Area window{
        .x = corner->dst_x, .y = corner->dst_y, .width = geometry->width, .height = geometry->height};
    return Dock{.window = window, .strut = *strut};
}

} // namespace

Area Docks::freeOf(const Area& monitor) const {
    Area left = monitor;
    for (const Dock& dock : docks) {
        // A strut counts from the edge of the desktop, so that of a dock between two monitors takes all of
        // one.
        if (across(dock.window).meets(across(monitor)) && down(dock.window).meets(down(monitor))) {
            left = reduced(left, desktop, dock.strut);
        }
    }
    return left;
}

Docks findDocks() {
    Docks found;
    const ConnectionPtr connection = connect();
    if (!connection) {
        return found;
    }
    const xcb_screen_t& screen = firstScreen(*connection);
    found.desktop = {.width = screen.width_in_pixels, .height = screen.height_in_pixels};
    const xcb_atom_t partial = atomNamed(*connection, "_NET_WM_STRUT_PARTIAL");
    const xcb_atom_t old = atomNamed(*connection, "_NET_WM_STRUT");
    const xcb_get_property_cookie_t list =
        ask(*connection, screen.root, atomNamed(*connection, "_NET_CLIENT_LIST"));
    const Property windows(xcb_get_property_reply(connection.get(), list, nullptr));

    std::vector<Questions> asked;
    for (const xcb_window_t window : valuesOf(windows)) {
        asked.push_back(
            {.partial = ask(*connection, window, partial),
             .old = ask(*connection, window, old),
             .geometry = xcb_get_geometry(connection.get(), window),
             .corner = xcb_translate_coordinates(connection.get(), window, screen.root, 0, 0)});
    }
    for (const Questions& questions : asked) {
        if (const std::optional<Dock> dock = answered(*connection, questions)) {
            found.docks.push_back(*dock);
        }
    }
    return found;
}

} // namespace tarnwick::X11
