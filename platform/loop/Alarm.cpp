#include "platform/loop/Alarm.h"

#include <algorithm>
#include <cerrno>
#include <sys/timerfd.h>
#include <system_error>

namespace tarnwick {

using std::chrono::nanoseconds;

Alarm::Alarm() : timer_(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {
    if (!timer_.isOpen()) {
        throw std::system_error(errno, std::generic_category(), "timerfd_create");
    }
}

void Alarm::set(std::optional<nanoseconds> time) {
    if (time == time_) {
        return;
    }
    time_ = time;
    // The system takes zero for "never".
    const nanoseconds value = time ? std::max(*time, nanoseconds(1)) : nanoseconds::zero();
    const auto whole = std::chrono::duration_cast<std::chrono::seconds>(value);
    itimerspec setting{};
    setting.it_value.tv_sec = whole.count();
    setting.it_value.tv_nsec = (value - whole).count();
    ::timerfd_settime(timer_.get(), TFD_TIMER_ABSTIME, &setting, nullptr);
}

} // namespace tarnwick
