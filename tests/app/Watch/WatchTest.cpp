// The terminal program around the model: what it shows when.
#include "app/Watch/Watch.h"

#include "tests/app/WatchedMonitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::ElementsAre;

/// What a presentation was asked to do.
struct Shown {
    int times = 0;
    int timesResized = 0;
    std::vector<std::int64_t> lost; ///< pings, at each showing
};

class RecordingPresentation final : public Presentation {
public:
    RecordingPresentation(Shown& shown, const Monitor& monitor) : shown_(shown), monitor_(monitor) {}

    void show(double /*judgedAt*/) override {
        ++shown_.times;
        shown_.lost.push_back(monitor_.reading().session.lost);
    }

    void windowResized() override { ++shown_.timesResized; }

private:
    Shown& shown_;
    const Monitor& monitor_;
};

class WatchTest : public testing::Test, protected WatchedMonitor {
protected:
    void startAndWait(double seconds) {
        watch_.start();
        loop.advance(seconds);
    }

    Shown shown_;
    Watch watch_{loop, monitor, std::make_unique<RecordingPresentation>(shown_, monitor)};
};

} // namespace

TEST_F(WatchTest, ShowsTheModelAtOnceAndThenAfterEveryTick) {
    watch_.start();
    EXPECT_EQ(shown_.times, 1);

    loop.advance(5.5);
    EXPECT_EQ(shown_.times, 6);
}

TEST_F(WatchTest, ShowsWhatTheTickHasJustEvaluated) {
    fallSilent();
    startAndWait(6.5);

    EXPECT_THAT(shown_.lost, ElementsAre(0, 0, 0, 0, 0, 1, 2));
}

TEST_F(WatchTest, PassesTheWindowsNewSizeOn) {
    startAndWait(1);

    watch_.windowResized();

    EXPECT_EQ(shown_.timesResized, 1);
}

TEST_F(WatchTest, TheModelMayOutliveIt) {
    auto shortLived =
        std::make_unique<Watch>(loop, monitor, std::make_unique<RecordingPresentation>(shown_, monitor));
    shortLived->start();
    loop.advance(1.5);
    shortLived.reset();

    loop.advance(10);

    EXPECT_EQ(shown_.times, 2);
}

} // namespace tarnwick
