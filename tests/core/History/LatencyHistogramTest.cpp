// Latencies counted in buckets.
#include "core/History/LatencyHistogram.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

LatencyHistogram histogramOf(const std::vector<double>& latencies) {
    LatencyHistogram histogram;
    for (const double ms : latencies) {
        histogram.add(ms);
    }
    return histogram;
}

/// Half a bucket to either side, and what rounding brings.
void expectNear(std::optional<double> found, double expected) {
    ASSERT_TRUE(found);
    EXPECT_LE(*found, expected * 1.022);
    EXPECT_GE(*found, expected / 1.022);
}

TEST(LatencyHistogram, HasNoPercentileWithoutAnswers) {
    EXPECT_EQ(LatencyHistogram().percentile(0.5), std::nullopt);
    EXPECT_EQ(LatencyHistogram().count(), 0);
}

TEST(LatencyHistogram, FindsPercentilesWithinABucket) {
    std::vector<double> latencies;
    for (int ms = 1; ms <= 1000; ++ms) {
        latencies.push_back(ms);
    }
    const LatencyHistogram histogram = histogramOf(latencies);

    EXPECT_EQ(histogram.count(), 1000);
    expectNear(histogram.percentile(0), 1);
    expectNear(histogram.percentile(0.5), 500);
    expectNear(histogram.percentile(0.95), 950);
    expectNear(histogram.percentile(1), 1000);
}

TEST(LatencyHistogram, TakesTheNearestRank) {
    const LatencyHistogram histogram = histogramOf({10, 20, 40, 80});

    expectNear(histogram.percentile(0.25), 10);
    expectNear(histogram.percentile(0.26), 20);
    expectNear(histogram.percentile(0.75), 40);
    expectNear(histogram.percentile(0.95), 80);
}

TEST(LatencyHistogram, CountsWhatIsOutOfRangeInTheOutermostBuckets) {
    const LatencyHistogram histogram = histogramOf({-1, 0, 1e-9, 1e12});

    EXPECT_EQ(histogram.count(), 4);
    EXPECT_LT(histogram.percentile(0.75), 0.0011);
    EXPECT_GT(histogram.percentile(1), 3.6e6);
    EXPECT_EQ(LatencyHistogram::decoded(histogram.encoded()), histogram);
}

TEST(LatencyHistogram, MergesToWhatASingleOneHolds) {
    LatencyHistogram merged = histogramOf({1, 20, 300});
    merged.merge(histogramOf({20, 5, 4000}));
    merged.merge({});

    EXPECT_EQ(merged, histogramOf({1, 5, 20, 20, 300, 4000}));
}

TEST(LatencyHistogram, TakesTwoBytesForAUsualBucket) {
    EXPECT_EQ(histogramOf({}).encoded(), "");
    EXPECT_EQ(histogramOf({0}).encoded(), std::string("\x01\x01"));
    EXPECT_EQ(histogramOf({20, 20, 21}).encoded().size(), 5U); // the first one's place takes two bytes
}

TEST(LatencyHistogram, ReadsNoBytesThatItDoesNotWrite) {
    using namespace std::string_literals;
    const std::vector<std::string> wrong{
        "\x01"s,                                 // the count is missing
        "\x81"s,                                 // a number's end is missing
        "\x00\x01"s,                             // a bucket twice
        "\x01\x00"s,                             // an empty bucket
        "\x81\x00\x01"s,                         // a number longer than it needs to be
        "\x81\x04\x01"s,                         // beyond the last bucket
        "\x01\xff\xff\xff\xff\xff\xff\xff\x7f"s, // more than can be
    };
    for (const std::string& bytes : wrong) {
        EXPECT_EQ(LatencyHistogram::decoded(bytes), std::nullopt) << testing::PrintToString(bytes);
    }
    EXPECT_NE(LatencyHistogram::decoded("\x80\x04\x01"s), std::nullopt); // the last bucket
}

} // namespace
} // namespace tarnwick
