// How often each latency occurred, in few bytes: what percentiles of merged periods are computed from.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

/// Counts latencies in buckets, each `bucketRatio` times as wide as the one below. Medians of medians would
/// be wrong; merged histograms hold what a single one would.
class LatencyHistogram {
public:
    static constexpr int bucketsPerDoubling = 16;
    /// From the lower end of a bucket to its upper end: 2 to the power of 1/16.
    static constexpr double bucketRatio = 1.0442737824274138;
    /// Lower and upper end of all buckets; what lies beyond counts in the outermost one.
    static constexpr double lowestMs = 0.001;
    static constexpr int bucketCount = 512; ///< up to more than an hour

    void add(double ms);
    void merge(const LatencyHistogram& other);

    [[nodiscard]] std::int64_t count() const;

    /// The latency that `share` (0 to 1) of the answers do not exceed, by the nearest rank: the middle of the
    /// bucket where it lies, so at most half a bucket off. Nothing without answers.
    [[nodiscard]] std::optional<double> percentile(double share) const;

    /// Two or three bytes for each bucket in use.
    [[nodiscard]] std::string encoded() const;
    /// Nothing for bytes that `encoded` does not write.
    [[nodiscard]] static std::optional<LatencyHistogram> decoded(std::string_view bytes);

    friend bool operator==(const LatencyHistogram&, const LatencyHistogram&) = default;

private:
    struct Bucket {
        int index;
        std::int64_t count;

        friend bool operator==(const Bucket&, const Bucket&) = default;
    };

    using Place = std::vector<Bucket>::iterator;

    void add(const Bucket& bucket);
    /// At the first place whose index is not below the bucket's. Returns where it is then.
    Place addAt(Place place, const Bucket& bucket);

    std::vector<Bucket> buckets_; ///< those in use, by index
};

} // namespace tarnwick
