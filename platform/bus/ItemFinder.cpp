#include "platform/bus/ItemFinder.h"

#include "platform/bus/BusCall.h"

#include <cstdint>
#include <tuple>
#include <utility>

namespace tarnwick {

namespace {

using PlaceReply = std::tuple<std::int32_t, std::int32_t>;

} // namespace

ItemFinder::ItemFinder(BusConnection& bus) : bus_(bus) {
}

void ItemFinder::find(std::function<void(std::optional<ScreenPoint>)> found) {
    const BusConnection::Call call{
        .destination = "org.tarnwick.ItemPlace",
        .path = "/org/tarnwick/ItemPlace",
        .interface = "org.tarnwick.ItemPlace",
        .method = "Find",
        .timeout = patience,
    };
    callBus<PlaceReply>(
        bus_, call, std::tuple(),
        lifeline_.guarded([found = std::move(found)](const std::optional<PlaceReply>& place) {
            found(
                place ? std::optional(ScreenPoint{.x = std::get<0>(*place), .y = std::get<1>(*place)})
                      : std::nullopt);
        }));
}

} // namespace tarnwick
