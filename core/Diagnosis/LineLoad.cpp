#include "core/Diagnosis/LineLoad.h"

#include <algorithm>
#include <utility>

namespace tarnwick {

namespace {

/// Mbit/s from which on seconds of load are counted.
constexpr double loadWorthTheName = 1;

double mbitPerSecond(std::uint64_t bytes, double seconds) {
    constexpr double mbitPerByte = 8e-6;
    return static_cast<double>(bytes) * mbitPerByte / seconds;
}

} // namespace

void LineLoad::note(std::uint64_t sentBytes, std::uint64_t receivedBytes, double now) {
    const Reading present{.sentBytes = sentBytes, .receivedBytes = receivedBytes, .at = now};
    const std::optional<Reading> before = std::exchange(latest_, present);
    const bool hasGrown = before && sentBytes >= before->sentBytes && receivedBytes >= before->receivedBytes;
    if (!hasGrown || now <= before->at) {
        load_ = {};
        return;
    }
    const double seconds = now - before->at;
    load_.sentMbit = mbitPerSecond(sentBytes - before->sentBytes, seconds);
    load_.receivedMbit = mbitPerSecond(receivedBytes - before->receivedBytes, seconds);
    const bool isLoaded = std::max(load_.sentMbit, load_.receivedMbit) >= loadWorthTheName;
    load_.seconds = isLoaded ? load_.seconds + seconds : 0;
}

void LineLoad::forget() {
    latest_.reset();
    load_ = {};
}

} // namespace tarnwick
