#include "platform/linux/SuspendedTime.h"

#include "core/ClockPair.h"

namespace tarnwick::SuspendedTime {

double sinceBoot() {
    return ClockPair::read(CLOCK_BOOTTIME).difference();
}

} // namespace tarnwick::SuspendedTime
