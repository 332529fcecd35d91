#include "app/StatusMenuView/PressWatch.h"

#include <cstdlib>
#include <optional>
#include <utility>
#include <xcb/xcb.h>
#include <xcb/xinput.h>

namespace tarnwick {

namespace {

template<class Reply>
using ReplyPtr = std::unique_ptr<Reply, decltype(&std::free)>;

constexpr std::uint16_t neededMajor = 2;
constexpr std::uint16_t neededMinor = 2;
// Turning a wheel counts as pressing the buttons 4 to 7, and closes nothing.
constexpr std::uint32_t firstWheelButton = 4;
constexpr std::uint32_t lastWheelButton = 7;

bool knowsRawPresses(xcb_connection_t* connection) {
    const ReplyPtr<xcb_input_xi_query_version_reply_t> version(
        xcb_input_xi_query_version_reply(
            connection, xcb_input_xi_query_version(connection, neededMajor, neededMinor), nullptr),
        &std::free);
    return version
           && std::pair(version->major_version, version->minor_version)
                  >= std::pair(neededMajor, neededMinor);
}

/// The number of the button, when the event is a press of one.
std::optional<std::uint32_t> pressedButton(const xcb_generic_event_t& event) {
    constexpr std::uint8_t typeBits = 0x7F;
    if ((event.response_type & typeBits) != XCB_GE_GENERIC) {
        return std::nullopt;
    }
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if (generic.event_type != XCB_INPUT_RAW_BUTTON_PRESS) {
        return std::nullopt;
    }
    return reinterpret_cast<const xcb_input_raw_button_press_event_t&>(event).detail;
}

} // namespace

void PressWatch::Disconnect::operator()(xcb_connection_t* connection) const {
    xcb_disconnect(connection);
}

PressWatch::PressWatch(RunLoop& loop, std::function<void(ScreenPoint)> onPress)
    : onPress_(std::move(onPress)), connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_.get()) == 0 && selectPresses()) {
        watch_ = loop.watchReadable(xcb_get_file_descriptor(connection_.get()), [this] { readAvailable(); });
    }
}

bool PressWatch::selectPresses() {
    xcb_connection_t* const connection = connection_.get();
    const auto* const extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (extension == nullptr || extension->present == 0 || !knowsRawPresses(connection)) {
        return false;
    }
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;

    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } const presses{
        .head = {.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1},
        .mask = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS};

    xcb_input_xi_select_events(connection, root_, 1, &presses.head);
    return xcb_flush(connection) > 0;
}

void PressWatch::readAvailable() {
    xcb_connection_t* const connection = connection_.get();
    bool isPressed = false;
    while (const ReplyPtr<xcb_generic_event_t> event{xcb_poll_for_event(connection), &std::free}) {
        const auto button = pressedButton(*event);
        isPressed = isPressed || (button && (*button < firstWheelButton || *button > lastWheelButton));
    }
    if (xcb_connection_has_error(connection) != 0) {
        watch_.reset(); // would be readable for ever
        return;
    }
    if (!isPressed) {
        return;
    }
    const ReplyPtr<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, root_), nullptr), &std::free);
    if (pointer) {
        // Copied: what is called may end this watch.
        const auto callback = onPress_;
        callback({pointer->root_x, pointer->root_y});
    }
}

} // namespace tarnwick
