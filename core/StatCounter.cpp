#include "core/StatCounter.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace tarnwick {

namespace {

void increment(std::int64_t& count) {
    // Out of reach by pinging; a wrapped count would be wrong forever.
    if (count == std::numeric_limits<std::int64_t>::max()) {
        std::abort();
    }
    ++count;
}

} // namespace

void StatCounter::addPingSent() {
    increment(sent);
}

void StatCounter::addPingResponse(double ms) {
    increment(replied);
    slowestMs = std::max(slowestMs, ms);
    if (fastestMs == 0 || ms < fastestMs) {
        fastestMs = ms;
    }
    averageMs += (ms - averageMs) / static_cast<double>(replied);
}

void StatCounter::addPingTimeout() {
    increment(lost);
}

double StatCounter::lossPercent() const {
    if (sent < 1) {
        return 0;
    }
    return std::min(static_cast<double>(lost) / static_cast<double>(sent) * 100, 100.0);
}

bool StatCounter::isEmpty() const {
    return sent == 0 && replied == 0 && lost == 0;
}

} // namespace tarnwick
