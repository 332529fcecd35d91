// Histograms of any latencies.
#include "core/History/LatencyHistogram.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace tarnwick {
namespace {

/// From a microsecond to an hour, every magnitude alike.
std::vector<double> anyLatencies() {
    const auto exponents = *rc::gen::container<std::vector<int>>(rc::gen::inRange(-2999, 6556));
    std::vector<double> latencies;
    for (const int exponent : exponents) {
        latencies.push_back(std::pow(10.0, exponent / 1000.0));
    }
    return latencies;
}

LatencyHistogram countedIn(const std::vector<double>& latencies) {
    LatencyHistogram histogram;
    for (const double ms : latencies) {
        histogram.add(ms);
    }
    return histogram;
}

TEST(LatencyHistogramProperty, ComesBackFromItsBytes) {
    EXPECT_TRUE(rc::check([] {
        const LatencyHistogram histogram = countedIn(anyLatencies());
        RC_ASSERT(LatencyHistogram::decoded(histogram.encoded()) == histogram);
    }));
}

TEST(LatencyHistogramProperty, WritesAllBytesThatItReads) {
    EXPECT_TRUE(rc::check([] {
        const auto bytes = *rc::gen::container<std::string>(rc::gen::weightedOneOf<char>(
            {{20, rc::gen::inRange<char>(1, 4)}, {1, rc::gen::arbitrary<char>()}}));
        const auto histogram = LatencyHistogram::decoded(bytes);
        RC_CLASSIFY(histogram.has_value());
        RC_ASSERT(!histogram || histogram->encoded() == bytes);
    }));
}

TEST(LatencyHistogramProperty, FindsEachPercentileWithinHalfABucketHoweverItIsMerged) {
    EXPECT_TRUE(rc::check([] {
        std::vector<double> one = anyLatencies();
        const std::vector<double> other = anyLatencies();
        const double share = *rc::gen::inRange(0, 1001) / 1000.0;
        RC_PRE(!one.empty() || !other.empty());
        LatencyHistogram merged = countedIn(one);
        merged.merge(countedIn(other));
        one.insert(one.end(), other.begin(), other.end());
        RC_ASSERT(merged == countedIn(one));

        std::ranges::sort(one);
        const double rank = std::max(std::ceil(share * static_cast<double>(one.size())), 1.0);
        const double exact = one[static_cast<std::size_t>(rank) - 1];
        const double found = merged.percentile(share).value();
        const double half = std::sqrt(LatencyHistogram::bucketRatio) * 1.000001;
        RC_ASSERT(found <= exact * half);
        RC_ASSERT(found >= exact / half);
    }));
}

} // namespace
} // namespace tarnwick
