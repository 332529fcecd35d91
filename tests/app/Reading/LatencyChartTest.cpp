// The latency chart as data: its buckets, its scale, its colors, its description.
#include "app/Reading/LatencyChart.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace tarnwick {

namespace {

using LatencyChart::BarTone;
using LatencyChart::Bucket;
using LatencyChart::Chart;

RunLoop::WallTime at(double seconds) {
    return RunLoop::WallTime(
        std::chrono::duration_cast<RunLoop::WallTime::duration>(std::chrono::duration<double>(seconds)));
}

Sample reply(double sentAt, double ms) {
    return {.id = 1, .date = at(sentAt), .rttMs = ms};
}

Sample lostAt(double sentAt) {
    return {.id = 1, .date = at(sentAt), .lost = true};
}

/// The chart at second 10,009 with a ping every ten seconds: 30 buckets, the newest from 10,000 on.
std::vector<Bucket> chartOf(const Samples& samples) {
    return LatencyChart::buckets(samples, at(10'009), 10);
}

} // namespace

struct Division {
    double pingInterval;
    std::size_t buckets;
    double width;
};

class BucketDivision : public testing::TestWithParam<Division> {};

TEST_P(BucketDivision, CoversFiveMinutesInAtMost36Buckets) {
    const double now = 1'000'000;

    const auto buckets = LatencyChart::buckets({}, at(now), GetParam().pingInterval);

    ASSERT_EQ(buckets.size(), GetParam().buckets);
    EXPECT_EQ(buckets.back().id, static_cast<std::int64_t>(std::floor(now / GetParam().width)));
    for (std::size_t index = 1; index < buckets.size(); ++index) {
        EXPECT_EQ(buckets[index].id, buckets[index - 1].id + 1);
    }
}

INSTANTIATE_TEST_SUITE_P(
    LatencyChart, BucketDivision,
    testing::Values(
        Division{1, 36, 300.0 / 36}, Division{8, 36, 300.0 / 36}, Division{9, 33, 9}, Division{10, 30, 10},
        Division{60, 5, 60}, Division{120, 3, 120}, Division{200, 2, 200}, Division{1000, 1, 1000}));

TEST(LatencyChart, BucketsStartEmpty) {
    EXPECT_THAT(
        chartOf({}),
        testing::Each(testing::AllOf(
            testing::Field(&Bucket::worstRtt, std::nullopt), testing::Field(&Bucket::lost, false))));
}

TEST(LatencyChart, BucketsDoNotMoveWithTheClock) {
    const Samples samples{reply(9'985, 20)};

    EXPECT_EQ(
        LatencyChart::buckets(samples, at(10'000), 10), LatencyChart::buckets(samples, at(10'009.999), 10));
}

TEST(LatencyChart, ASampleOnABoundaryBelongsToTheLaterBucket) {
    const auto buckets = chartOf({reply(9'990, 40), reply(9'999.999, 50), reply(10'000, 60)});

    EXPECT_EQ(buckets[28].worstRtt, 50);
    EXPECT_EQ(buckets[29].worstRtt, 60);
}

TEST(LatencyChart, ABucketHasItsSlowestReply) {
    EXPECT_EQ(chartOf({reply(10'001, 40), reply(10'002, 120), reply(10'003, 60)}).back().worstRtt, 120);
}

TEST(LatencyChart, ALossMarksTheBucketAndKeepsItsSlowestReply) {
    const Bucket bucket = chartOf({reply(10'001, 40), reply(10'002, 120), lostAt(10'003)}).back();

    EXPECT_EQ(bucket.worstRtt, 120);
    EXPECT_TRUE(bucket.lost);
}

TEST(LatencyChart, ALostPingThatWasAnsweredLateCountsAsItsReply) {
    const Bucket bucket = chartOf({{.id = 1, .date = at(10'001), .rttMs = 5000, .lost = true}}).back();

    EXPECT_EQ(bucket.worstRtt, 5000);
    EXPECT_FALSE(bucket.lost);
}

TEST(LatencyChart, APingThatIsStillOutLeavesItsBucketEmpty) {
    const Bucket bucket = chartOf({{.id = 1, .date = at(10'001)}}).back();

    EXPECT_EQ(bucket.worstRtt, std::nullopt);
    EXPECT_FALSE(bucket.lost);
}

TEST(LatencyChart, SamplesBeforeTheFirstAndAfterTheLastBucketAreIgnored) {
    const auto buckets = chartOf({reply(9'709.999, 20), lostAt(9'000), reply(10'010, 20), lostAt(99'999)});

    EXPECT_EQ(buckets, chartOf({}));
}

TEST(LatencyChart, TheOldestBucketIsShown) {
    EXPECT_EQ(chartOf({reply(9'710, 20)}).front().worstRtt, 20);
}

TEST(LatencyChart, WithAPingEverySecondTheBucketsHoldAllOfTheLastFiveMinutes) {
    Samples samples;
    for (int second = 0; second < 300; ++second) {
        samples.push_back(reply(10'000 + second, second));
    }

    const auto buckets = LatencyChart::buckets(samples, at(10'299.5), 1);

    EXPECT_EQ(buckets.size(), 36u);
    EXPECT_TRUE(
        std::ranges::all_of(buckets, [](const Bucket& bucket) { return bucket.worstRtt.has_value(); }));
    EXPECT_EQ(buckets.back().worstRtt, 299);
}

TEST(LatencyChart, NoBucketIsWorseThanItsWorstSampleWhateverTheSamples) {
    EXPECT_TRUE(rc::check("every bucket value is that of a sample", [] {
        const auto interval = *rc::gen::inRange(1, 61);
        Samples samples;
        for (const int offset : *rc::gen::container<std::vector<int>>(rc::gen::inRange(-400, 100))) {
            samples.push_back(reply(10'000 + offset, *rc::gen::inRange(0, 5000)));
        }
        for (const Bucket& bucket : LatencyChart::buckets(samples, at(10'000), interval)) {
            RC_ASSERT(!bucket.worstRtt || std::ranges::count(samples, bucket.worstRtt, &Sample::rttMs) > 0);
        }
    }));
}

// The value axis.

struct Rounded {
    double value;
    double ceiling;
};

class NiceCeil : public testing::TestWithParam<Rounded> {};

TEST_P(NiceCeil, RoundsUpToARoundMaximum) {
    EXPECT_DOUBLE_EQ(LatencyChart::niceCeil(GetParam().value), GetParam().ceiling);
}

INSTANTIATE_TEST_SUITE_P(
    LatencyChart, NiceCeil,
    testing::Values(
        Rounded{1, 10}, Rounded{10, 10}, Rounded{60, 60}, Rounded{100, 100}, Rounded{101, 125},
        Rounded{130, 150}, Rounded{250, 250}, Rounded{251, 300}, Rounded{500, 500}, Rounded{501, 600},
        Rounded{1000, 1000}, Rounded{1001, 1250}, Rounded{1234, 1250}, Rounded{2500, 2500},
        Rounded{2501, 3000}, Rounded{5000, 5000}, Rounded{5001, 6000}, Rounded{6100, 7000}));

struct Scale {
    std::vector<double> rtts;
    double lowThreshold;
    double top;
};

class ScaleMax : public testing::TestWithParam<Scale> {};

TEST_P(ScaleMax, FitsTheReplies) {
    EXPECT_DOUBLE_EQ(LatencyChart::scaleMax(GetParam().rtts, GetParam().lowThreshold), GetParam().top);
}

std::vector<double> times(std::size_t count, double ms) {
    return std::vector(count, ms);
}

INSTANTIATE_TEST_SUITE_P(WithoutReplies, ScaleMax, testing::Values(Scale{{}, 100, 150}, Scale{{}, 50, 80}));

INSTANTIATE_TEST_SUITE_P(
    FarFromTheThreshold, ScaleMax,
    testing::Values(
        Scale{times(20, 10), 100, 20}, Scale{times(20, 30), 100, 40}, Scale{times(1, 0.1), 100, 20},
        Scale{times(20, 200), 100, 250}, Scale{times(20, 104), 100, 150}));

INSTANTIATE_TEST_SUITE_P(
    NearTheThreshold, ScaleMax,
    testing::Values(
        Scale{times(20, 90), 100, 125}, Scale{times(20, 100), 100, 125}, Scale{times(20, 34), 100, 125},
        Scale{times(20, 40), 120, 150}));

TEST(LatencyChart, TheScaleIsThatOfThe95thPercentile) {
    std::vector<double> slowestFirst;
    for (int ping = 100; ping > 0; --ping) {
        slowestFirst.push_back(ping * 100);
    }

    // The 95th of 0 to 99 is 9600 ms; a quarter more is 12,000 ms.
    EXPECT_DOUBLE_EQ(LatencyChart::scaleMax(slowestFirst, 100), 12'000);
}

TEST(LatencyChart, ASingleOutlierDoesNotFlattenTheChart) {
    std::vector<double> rtts = times(35, 30);
    rtts.insert(rtts.begin() + 7, 4000);

    EXPECT_DOUBLE_EQ(LatencyChart::scaleMax(rtts, 100), 40);
}

// The description.

TEST(LatencyChart, TheDescriptionNamesTheUpperMedianTheSlowestAndTheLost) {
    EXPECT_EQ(
        LatencyChart::summary({30, 10, 20, 40}, 0),
        "Median 30 milliseconds, slowest 40 milliseconds, 0 lost");
    EXPECT_EQ(
        LatencyChart::summary({87, 23, 11}, 2), "Median 23 milliseconds, slowest 87 milliseconds, 2 lost");
}

TEST(LatencyChart, TheDescriptionRoundsToWholeMilliseconds) {
    EXPECT_EQ(LatencyChart::summary({22.5}, 0), "Median 23 milliseconds, slowest 23 milliseconds, 0 lost");
}

TEST(LatencyChart, WithoutRepliesTheDescriptionCountsTheLosses) {
    EXPECT_EQ(LatencyChart::summary({}, 0), "No replies yet");
    EXPECT_EQ(LatencyChart::summary({}, 1), "1 lost, no replies");
    EXPECT_EQ(LatencyChart::summary({}, 7), "7 lost, no replies");
}

TEST(LatencyChart, AChartIsDescribedByItsReplyTimesAndItsBucketsWithALoss) {
    const auto buckets = chartOf(
        {reply(9'750, 30), reply(9'800, 10), lostAt(9'800), lostAt(9'801), lostAt(9'900), reply(10'000, 20)});

    const Chart chart{.buckets = buckets, .lowThresholdMs = 100, .highThresholdMs = 1000};
    EXPECT_EQ(chart.summary(), LatencyChart::summary({30, 10, 20}, 2));
    EXPECT_EQ(chart.scaleMax(), LatencyChart::scaleMax({30, 10, 20}, 100));
}

// The bars' colors, with thresholds of 100 and 1000 ms.

struct ExpectedTone {
    Bucket bucket;
    BarTone tone;
};

class BucketTone : public testing::TestWithParam<ExpectedTone> {};

TEST_P(BucketTone, FollowsLatencyAndLoss) {
    const Chart chart{.lowThresholdMs = 100, .highThresholdMs = 1000};

    EXPECT_EQ(chart.tone(GetParam().bucket), GetParam().tone);
}

INSTANTIATE_TEST_SUITE_P(
    LatencyChart, BucketTone,
    testing::Values(
        ExpectedTone{{.worstRtt = 20}, BarTone::good}, ExpectedTone{{.worstRtt = 100}, BarTone::good},
        ExpectedTone{{.worstRtt = 100.1}, BarTone::warn}, ExpectedTone{{.worstRtt = 550}, BarTone::warn},
        ExpectedTone{{.worstRtt = 550.1}, BarTone::bad}, ExpectedTone{{.worstRtt = 3000}, BarTone::bad},
        ExpectedTone{{.worstRtt = 20, .lost = true}, BarTone::bad},
        ExpectedTone{{.lost = true}, BarTone::outage}, ExpectedTone{{}, BarTone::none}));

} // namespace tarnwick
