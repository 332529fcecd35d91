#include "platform/x11/PressWatch.h"

#include <utility>
#include <xcb/xcb.h>
#include <xcb/xinput.h>

namespace tarnwick::X11 {

namespace {

constexpr std::uint16_t neededMajor = 2;
constexpr std::uint16_t neededMinor = 2;
// Turning a wheel presses the buttons 4 to 7.
constexpr std::uint32_t firstWheelButton = 4;
constexpr std::uint32_t lastWheelButton = 7;

bool knowsRawEvents(xcb_connection_t* connection) {
    const ReplyPtr<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
        connection, xcb_input_xi_query_version(connection, neededMajor, neededMinor), nullptr));
    return version
           && std::pair(version->major_version, version->minor_version)
                  >= std::pair(neededMajor, neededMinor);
}

/// The event as one of a button; null for any other, and for a wheel.
const xcb_input_raw_button_press_event_t* buttonEvent(const xcb_generic_event_t& event) {
    if (eventType(event.response_type) != XCB_GE_GENERIC) {
        return nullptr;
    }
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if (generic.event_type != XCB_INPUT_RAW_BUTTON_PRESS
        && generic.event_type != XCB_INPUT_RAW_BUTTON_RELEASE) {
        return nullptr;
    }
    const auto* const button = reinterpret_cast<const xcb_input_raw_button_press_event_t*>(&event);
    const bool isWheel = button->detail >= firstWheelButton && button->detail <= lastWheelButton;
    return isWheel ? nullptr : button;
}

} // namespace

PressWatch::PressWatch(RunLoop& loop, std::function<void(const Buttons&)> onButtons)
    : onButtons_(std::move(onButtons)), connection_(connect()) {
    if (connection_ && selectButtons()) {
        watch_ = loop.watchReadable(xcb_get_file_descriptor(connection_.get()), [this] { readAvailable(); });
    }
}

bool PressWatch::selectButtons() {
    xcb_connection_t* const connection = connection_.get();
    const auto* const extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (extension == nullptr || extension->present == 0 || !knowsRawEvents(connection)) {
        return false;
    }
    root_ = firstScreen(*connection).root;

    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } const buttons{
        .head = {.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1},
        .mask = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE};

    xcb_input_xi_select_events(connection, root_, 1, &buttons.head);
    return xcb_flush(connection) > 0;
}

void PressWatch::readAvailable() {
    Moved moved = takeEvents();
    Buttons buttons;
    if (moved.pressed) {
        buttons.pressedAt = pointer();
        // Events that came before the reply were read with it; the descriptor does not tell of them again.
        const Moved later = takeEvents();
        moved.released = moved.released || later.released;
    }
    if (xcb_connection_has_error(connection_.get()) != 0) {
        watch_.reset(); // a broken connection stays readable
        moved.released = moved.released || isHeld_;
        isHeld_ = false;
    }
    if (buttons.pressedAt || moved.released) {
        buttons.isHeld = isHeld_;
        // Copied: the callback may destroy this watch.
        const auto callback = onButtons_;
        callback(buttons);
    }
}

PressWatch::Moved PressWatch::takeEvents() {
    Moved moved;
    while (const ReplyPtr<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        if (const auto* const button = buttonEvent(*event)) {
            isHeld_ = button->event_type == XCB_INPUT_RAW_BUTTON_PRESS;
            moved.pressed = moved.pressed || isHeld_;
            moved.released = moved.released || !isHeld_;
        }
    }
    return moved;
}

std::optional<ScreenPoint> PressWatch::pointer() const {
    xcb_connection_t* const connection = connection_.get();
    const ReplyPtr<xcb_query_pointer_reply_t> reply(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, root_), nullptr));
    return reply ? std::optional(ScreenPoint{reply->root_x, reply->root_y}) : std::nullopt;
}

} // namespace tarnwick::X11
