// How readers of a property learn of its changes.
#include "app/Observation/Observation.h"

#include "tests/simulation/VirtualRunLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace tarnwick {

namespace {

/// Counts the callbacks of one tracked run.
struct Counted {
    int changes = 0;
    TrackingHandle handle;

    explicit Counted(const std::function<void()>& apply) {
        handle = withTracking(apply, [this] { ++changes; });
    }
};

} // namespace

TEST(Observation, TheTrackedFunctionRunsAtOnce) {
    const Observed<int> property(7);
    int seen = 0;

    const auto handle = withTracking([&] { seen = property.get(); }, [] {});

    EXPECT_EQ(seen, 7);
}

TEST(Observation, TheFirstChangeRunsTheCallbackAndLaterOnesDoNot) {
    Observed<int> property(1);
    const Counted reader([&] { static_cast<void>(property.get()); });
    EXPECT_EQ(reader.changes, 0);

    property.set(2);
    EXPECT_EQ(reader.changes, 1);
    property.set(3);
    EXPECT_EQ(reader.changes, 1);
}

TEST(Observation, TheCallbackRunsWithinTheChangeAndSeesTheNewValue) {
    Observed<std::string> property(std::string("old"));
    std::string seen;
    const auto handle =
        withTracking([&] { static_cast<void>(property.get()); }, [&] { seen = property.get(); });

    property.set("new");

    EXPECT_EQ(seen, "new");
}

TEST(Observation, AnEqualValueTellsNoReader) {
    Observed<std::optional<double>> property(std::optional(1.5));
    const Counted reader([&] { static_cast<void>(property.get()); });

    property.set(1.5);

    EXPECT_EQ(reader.changes, 0);
}

TEST(Observation, AReaderStillWaitsAfterAnEqualValue) {
    Observed<int> property(1);
    const Counted reader([&] { static_cast<void>(property.get()); });
    property.set(1);

    property.set(2);

    EXPECT_EQ(reader.changes, 1);
}

TEST(Observation, TheFirstChangeOfSeveralPropertiesRunsTheCallbackOnce) {
    Observed<int> first(1);
    Observed<int> second(1);
    const Counted reader([&] { static_cast<void>(first.get() + second.get()); });

    second.set(2);
    first.set(2);

    EXPECT_EQ(reader.changes, 1);
}

TEST(Observation, AChangeOfAnotherPropertyTellsNoReader) {
    Observed<int> isRead(1);
    Observed<int> isNotRead(1);
    const Counted reader([&] { static_cast<void>(isRead.get()); });

    isNotRead.set(2);

    EXPECT_EQ(reader.changes, 0);
}

TEST(Observation, ReadingAPropertyTwiceRunsTheCallbackOnce) {
    Observed<int> property(1);
    const Counted reader([&] { static_cast<void>(property.get() + property.get()); });

    property.set(2);

    EXPECT_EQ(reader.changes, 1);
}

TEST(Observation, EveryReaderIsTold) {
    Observed<int> property(1);
    const Counted one([&] { static_cast<void>(property.get()); });
    const Counted other([&] { static_cast<void>(property.get()); });

    property.set(2);

    EXPECT_EQ(one.changes, 1);
    EXPECT_EQ(other.changes, 1);
}

TEST(Observation, ReadingOutsideATrackedFunctionRegistersNothing) {
    Observed<int> property(1);
    const Counted reader([] {});

    static_cast<void>(property.get());
    property.set(2);

    EXPECT_EQ(reader.changes, 0);
}

TEST(Observation, NothingHappensAfterTheHandleIsGone) {
    Observed<int> property(1);
    Counted reader([&] { static_cast<void>(property.get()); });
    reader.handle.reset();

    property.set(2);

    EXPECT_EQ(reader.changes, 0);
}

TEST(Observation, WhatANestedTrackedFunctionReadsIsItsOwn) {
    Observed<int> outerOnly(1);
    Observed<int> innerOnly(1);
    std::optional<Counted> inner;
    const Counted outer([&] {
        static_cast<void>(outerOnly.get());
        inner.emplace([&] { static_cast<void>(innerOnly.get()); });
    });

    innerOnly.set(2);
    EXPECT_EQ(inner->changes, 1);
    EXPECT_EQ(outer.changes, 0);

    outerOnly.set(2);
    EXPECT_EQ(inner->changes, 1);
    EXPECT_EQ(outer.changes, 1);
}

TEST(Observation, TheOuterFunctionIsTrackedAgainAfterANestedOne) {
    Observed<int> readLast(1);
    const Counted outer([&] {
        const Counted inner([] {});
        static_cast<void>(readLast.get());
    });

    readLast.set(2);

    EXPECT_EQ(outer.changes, 1);
}

TEST(Observation, ReadingWithoutTrackingRegistersNothingWithTheOuterFunction) {
    Observed<int> tracked(1);
    Observed<int> untracked(1);
    const Counted reader([&] {
        withoutTracking([&] { static_cast<void>(untracked.get()); });
        static_cast<void>(tracked.get());
    });

    untracked.set(2);
    EXPECT_EQ(reader.changes, 0);
    tracked.set(2);
    EXPECT_EQ(reader.changes, 1);
}

TEST(Observation, ACallbackThatTracksAgainIsToldOfTheNextChangeOnly) {
    Observed<int> property(1);
    int changes = 0;
    std::vector<TrackingHandle> handles;
    std::function<void()> track = [&] {
        handles.push_back(withTracking(
            [&] { static_cast<void>(property.get()); },
            [&] {
                ++changes;
                track();
            }));
    };
    track();

    property.set(2);
    EXPECT_EQ(changes, 1);
    property.set(3);
    EXPECT_EQ(changes, 2);
}

TEST(Observation, ACallbackMayEndAnothersWait) {
    Observed<int> property(1);
    std::optional<Counted> second;
    const auto first =
        withTracking([&] { static_cast<void>(property.get()); }, [&] { second->handle.reset(); });
    second.emplace([&] { static_cast<void>(property.get()); });

    property.set(2);

    EXPECT_EQ(second->changes, 0);
}

TEST(Observation, AnInPlaceChangeTellsOnlyWhenItChangedSomething) {
    Observed<std::vector<int>> property;
    const Counted reader([&] { static_cast<void>(property.get()); });

    property.mutate([](auto&) { return false; });
    EXPECT_EQ(reader.changes, 0);

    property.mutate([](auto& values) {
        values.push_back(1);
        return true;
    });
    EXPECT_EQ(reader.changes, 1);
    EXPECT_THAT(property.get(), testing::ElementsAre(1));
}

TEST(Observation, APropertyThatNeverChangesDoesNotCollectItsFormerReaders) {
    Observers observers;
    for (int run = 0; run < 1000; ++run) {
        const Counted reader([&] { observers.access(); });
    }

    EXPECT_LE(observers.count(), 2u);
}

// The loop that draws again after each change.

TEST(Derived, TellsItsReadersOnlyWhenItDiffers) {
    Observed<int> source(10);
    const Derived<int> tens([&] { return source.get() / 10; });
    const Counted reader([&] { static_cast<void>(tens.get()); });

    source.set(15);
    source.set(19);
    EXPECT_EQ(reader.changes, 0);
    source.set(20);

    EXPECT_EQ(reader.changes, 1);
    EXPECT_EQ(tens.get(), 2);
}

TEST(Derived, IsTrueForEveryReaderAtAnyTime) {
    Observed<int> source(10);
    const Derived<int> tens([&] { return source.get() / 10; });
    EXPECT_EQ(tens.get(), 1);

    source.set(20);
    source.set(30);

    EXPECT_EQ(tens.get(), 3);
}

TEST(Derived, TellsOfChangesAfterTheFirst) {
    Observed<int> source(10);
    const Derived<int> tens([&] { return source.get() / 10; });
    std::optional<Counted> reader;

    for (const int value : {11, 20, 25, 30}) {
        reader.emplace([&] { static_cast<void>(tens.get()); });
        source.set(value);
        EXPECT_EQ(reader->changes, value % 10 == 0 ? 1 : 0) << value;
    }
}

TEST(Derived, WithoutReadersItFollowsNothing) {
    Observed<int> source(10);
    int made = 0;
    const Derived<int> tens([&] {
        ++made;
        return source.get() / 10;
    });
    {
        const Counted reader([&] { static_cast<void>(tens.get()); });
        source.set(11);
        ASSERT_EQ(made, 2);
    }

    source.set(12);
    source.set(20);

    EXPECT_EQ(made, 2);
}

TEST(RenderLoop, DrawsAtOnceAndAgainFromTheMainQueueAfterAChange) {
    simulation::VirtualRunLoop loop;
    Observed<int> property(1);
    std::vector<int> drawn;
    const RenderLoop render(loop, [&] { drawn.push_back(property.get()); });
    EXPECT_THAT(drawn, testing::ElementsAre(1));

    property.set(2);
    EXPECT_THAT(drawn, testing::ElementsAre(1));
    loop.runPending();

    EXPECT_THAT(drawn, testing::ElementsAre(1, 2));
}

TEST(RenderLoop, ABurstOfChangesCostsOneRun) {
    simulation::VirtualRunLoop loop;
    Observed<int> first(0);
    Observed<int> second(0);
    int runs = 0;
    const RenderLoop render(loop, [&] {
        static_cast<void>(first.get() + second.get());
        ++runs;
    });

    for (int value = 1; value <= 100; ++value) {
        first.set(value);
        second.set(value);
    }
    loop.runPending();

    EXPECT_EQ(runs, 2);
}

TEST(RenderLoop, KeepsFollowingOneChangeAfterTheOther) {
    simulation::VirtualRunLoop loop;
    Observed<int> property(0);
    int runs = 0;
    const RenderLoop render(loop, [&] {
        static_cast<void>(property.get());
        ++runs;
    });

    for (int value = 1; value <= 10; ++value) {
        property.set(value);
        loop.runPending();
    }

    EXPECT_EQ(runs, 11);
}

TEST(RenderLoop, DoesNotDrawAgainWithoutAChange) {
    simulation::VirtualRunLoop loop;
    Observed<int> property(0);
    int runs = 0;
    const RenderLoop render(loop, [&] {
        static_cast<void>(property.get());
        ++runs;
    });

    property.set(0);
    loop.advance(3600);

    EXPECT_EQ(runs, 1);
}

TEST(RenderLoop, EndsWithItsOwnerEvenWhenARunIsAlreadyWaiting) {
    simulation::VirtualRunLoop loop;
    Observed<int> property(0);
    int runs = 0;
    auto render = std::make_unique<RenderLoop>(loop, [&] {
        static_cast<void>(property.get());
        ++runs;
    });
    property.set(1);
    render.reset();

    property.set(2);
    loop.runPending();

    EXPECT_EQ(runs, 1);
}

TEST(RenderLoop, LeavesNoReadersBehindInAPropertyThatNeverChanges) {
    simulation::VirtualRunLoop loop;
    Observed<int> changing(0);
    Observers constant;
    const RenderLoop render(loop, [&] {
        static_cast<void>(changing.get());
        constant.access();
    });

    for (int value = 1; value <= 1000; ++value) {
        changing.set(value);
        loop.runPending();
    }

    EXPECT_LE(constant.count(), 2u);
}

} // namespace tarnwick
