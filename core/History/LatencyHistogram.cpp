#include "core/History/LatencyHistogram.h"

#include <algorithm>
#include <cmath>

namespace tarnwick {

namespace {

/// More than a ping every microsecond for two years, and far from where sums overflow.
constexpr std::int64_t mostAnswers = std::int64_t{1} << 47;

int bucketIndex(double ms) {
    if (!(ms > LatencyHistogram::lowestMs)) {
        return 0;
    }
    const double index =
        std::floor(std::log2(ms / LatencyHistogram::lowestMs) * LatencyHistogram::bucketsPerDoubling);
    return static_cast<int>(std::min<double>(index, LatencyHistogram::bucketCount - 1));
}

double middleMs(int index) {
    return LatencyHistogram::lowestMs * std::exp2((index + 0.5) / LatencyHistogram::bucketsPerDoubling);
}

/// Seven bits a byte, the low ones first; the highest bit says that more follow.
void appendNumber(std::string& bytes, std::uint64_t number) {
    for (; number >= 0x80; number >>= 7U) {
        bytes += static_cast<char>((number & 0x7FU) | 0x80U);
    }
    bytes += static_cast<char>(number);
}

/// Takes the number from the front of `bytes`. Nothing when they end within it, when it exceeds
/// `mostAnswers`, and when it is longer than it needs to be.
std::optional<std::int64_t> takeNumber(std::string_view& bytes) {
    std::uint64_t number = 0;
    for (unsigned shift = 0; shift < 49 && !bytes.empty(); shift += 7) {
        const auto byte = static_cast<unsigned char>(bytes.front());
        bytes.remove_prefix(1);
        number |= std::uint64_t{byte & 0x7FU} << shift;
        if ((byte & 0x80U) == 0) {
            const bool isShortest = byte != 0 || shift == 0;
            const bool isPossible = isShortest && number <= std::uint64_t{mostAnswers};
            return isPossible ? std::optional(static_cast<std::int64_t>(number)) : std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace

void LatencyHistogram::add(double ms) {
    add(Bucket{.index = bucketIndex(ms), .count = 1});
}

void LatencyHistogram::add(const Bucket& bucket) {
    addAt(std::ranges::lower_bound(buckets_, bucket.index, {}, &Bucket::index), bucket);
}

LatencyHistogram::Place LatencyHistogram::addAt(Place place, const Bucket& bucket) {
    if (place == buckets_.end() || place->index != bucket.index) {
        return buckets_.insert(place, bucket);
    }
    place->count = std::min(place->count + bucket.count, mostAnswers);
    return place;
}

void LatencyHistogram::merge(const LatencyHistogram& other) {
    auto place = buckets_.begin();
    for (const Bucket& bucket : other.buckets_) {
        place = std::find_if(
            place, buckets_.end(), [&](const Bucket& present) { return present.index >= bucket.index; });
        place = addAt(place, bucket);
    }
}

std::int64_t LatencyHistogram::count() const {
    std::int64_t sum = 0;
    for (const Bucket& bucket : buckets_) {
        sum += bucket.count;
    }
    return sum;
}

std::optional<double> LatencyHistogram::percentile(double share) const {
    if (buckets_.empty()) {
        return std::nullopt;
    }
    const double rank = std::max(std::ceil(share * static_cast<double>(count())), 1.0);
    std::int64_t sum = 0;
    for (const Bucket& bucket : buckets_) {
        sum += bucket.count;
        if (static_cast<double>(sum) >= rank) {
            return middleMs(bucket.index);
        }
    }
    return middleMs(buckets_.back().index);
}

std::string LatencyHistogram::encoded() const {
    std::string bytes;
    int previous = -1;
    for (const Bucket& bucket : buckets_) {
        appendNumber(bytes, static_cast<std::uint64_t>(bucket.index - previous));
        appendNumber(bytes, static_cast<std::uint64_t>(bucket.count));
        previous = bucket.index;
    }
    return bytes;
}

std::optional<LatencyHistogram> LatencyHistogram::decoded(std::string_view bytes) {
    LatencyHistogram histogram;
    histogram.buckets_.reserve(bytes.size() / 2); // as many at the most
    std::int64_t index = -1;
    while (!bytes.empty()) {
        const std::int64_t step = takeNumber(bytes).value_or(0);
        const std::int64_t count = takeNumber(bytes).value_or(0);
        index += step;
        if (step < 1 || count < 1 || index >= bucketCount) {
            return std::nullopt;
        }
        histogram.buckets_.push_back({.index = static_cast<int>(index), .count = count});
    }
    return histogram;
}

} // namespace tarnwick
