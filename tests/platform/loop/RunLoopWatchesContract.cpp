// What every run loop promises of watched descriptors.
#include "tests/platform/loop/RunLoopContract.h"

#include <array>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace tarnwick {

TEST_P(RunLoopContract, AWatchLeavesTheDescriptorBlockingAsItWas) {
    std::array<int, 2> ends{-1, -1};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const FileDescriptor reading(ends[0]);
    const FileDescriptor writing(ends[1]);
    int runs = 0;
    char byte = 0;
    driver().isWatched(reading.get());
    const auto watching = loop().watchReadable(reading.get(), [&] {
        EXPECT_EQ(::read(reading.get(), &byte, 1), 1);
        ++runs;
    });
    ASSERT_EQ(::write(writing.get(), "ab", 2), 2);

    ASSERT_TRUE(runUntil([&] { return runs >= 2; }));

    EXPECT_EQ(::fcntl(reading.get(), F_GETFL) & O_NONBLOCK, 0);
}

TEST_P(RunLoopContract, AWatchRunsForAsLongAsThereIsSomethingToRead) {
    const WatchedPipe pipe;
    std::string taken;
    const auto watching = watch(pipe, [&] { taken += pipe.take().value_or('?'); });
    pipe.put("abc");

    ASSERT_TRUE(runUntil([&] { return taken.size() >= 3; }));
    ASSERT_TRUE(runFor(step));

    EXPECT_EQ(taken, "abc");
}

TEST_P(RunLoopContract, AWatchIsSilentUntilThereIsSomethingToRead) {
    const WatchedPipe pipe;
    int runs = 0;
    const auto watching = watch(pipe, [&] {
        ++runs;
        EXPECT_TRUE(pipe.take());
    });
    ASSERT_TRUE(runFor(step));
    EXPECT_EQ(runs, 0);
    pipe.put("x");

    ASSERT_TRUE(runUntil([&] { return runs > 0; }));

    EXPECT_EQ(runs, 1);
}

TEST_P(RunLoopContract, OnlyTheWatchOfTheReadableDescriptorRuns) {
    const WatchedPipe silent;
    const WatchedPipe talking;
    int silentRuns = 0;
    int talkingRuns = 0;
    const auto watchingSilent = watch(silent, [&] { ++silentRuns; });
    const auto watchingTalking = watch(talking, [&] {
        ++talkingRuns;
        EXPECT_TRUE(talking.take());
    });
    talking.put("x");

    ASSERT_TRUE(runUntil([&] { return talkingRuns > 0; }));

    EXPECT_EQ(silentRuns, 0);
}

TEST_P(RunLoopContract, AWatchThatDestroysItsOwnHandleNeverRunsAgain) {
    const WatchedPipe pipe;
    RunLoop::Handle watching;
    std::vector<std::string> runs;
    watching = watch(pipe, [&, captured = std::string("a run that ended its watch")] {
        watching.reset();
        runs.push_back(captured);
    });
    pipe.put("unread");

    ASSERT_TRUE(runUntil([&] { return !runs.empty(); }));
    ASSERT_TRUE(runFor(2 * step));

    EXPECT_THAT(runs, testing::ElementsAre("a run that ended its watch"));
}

TEST_P(RunLoopContract, DestroyingTheHandleEndsAWatchAndLeavesTheDescriptorOpen) {
    const WatchedPipe pipe;
    int runs = 0;
    auto watching = watch(pipe, [&] { ++runs; });
    pipe.put("unread");
    watching.reset();

    ASSERT_TRUE(runFor(2 * step));

    EXPECT_EQ(runs, 0);
    EXPECT_EQ(pipe.take(), 'u');
}

TEST_P(RunLoopContract, ADescriptorMayBeWatchedAgainAfterItsFirstWatchHasEnded) {
    const WatchedPipe pipe;
    watch(pipe, [] { ADD_FAILURE() << "the first watch has ended"; }).reset();
    std::string taken;
    const auto second = watch(pipe, [&] { taken += pipe.take().value_or('?'); });
    pipe.put("x");

    ASSERT_TRUE(runUntil([&] { return !taken.empty(); }));

    EXPECT_EQ(taken, "x");
}

TEST_P(RunLoopContract, ADescriptorMayBeReplacedOnceItsWatchHasEndedInItsOwnTask) {
    auto first = std::make_unique<WatchedPipe>();
    std::optional<WatchedPipe> second;
    RunLoop::Handle watching;
    std::string taken;
    watching = watch(*first, [&] {
        watching.reset();
        first.reset();
        second.emplace(); // likely to get the numbers that have just become free
        second->put("x");
        watching = watch(*second, [&] { taken += second->take().value_or('?'); });
    });
    first->put("unread");

    ASSERT_TRUE(runUntil([&] { return !taken.empty(); }));

    EXPECT_EQ(taken, "x");
}

TEST_P(RunLoopContract, AWatchMayEndAnotherWhoseTurnItIs) {
    std::array<WatchedPipe, 2> pipes;
    std::array<RunLoop::Handle, 2> watching;
    int runs = 0;
    for (std::size_t index = 0; index < pipes.size(); ++index) {
        watching.at(index) = watch(pipes.at(index), [&, index] {
            ++runs;
            EXPECT_TRUE(pipes.at(index).take());
            watching.at(1 - index).reset();
        });
    }
    pipes[0].put("x");
    pipes[1].put("x");

    ASSERT_TRUE(runFor(2 * step));

    EXPECT_EQ(runs, 1);
}

TEST_P(RunLoopContract, AWritingWatchRunsForAsLongAsThereIsRoom) {
    const WatchedPipe pipe;
    const std::string block(4096, 'x');
    bool isFull = false;
    const auto watching = watchForRoom(pipe.writingEnd(), [&] {
        EXPECT_FALSE(isFull) << "there is no room";
        EXPECT_EQ(::write(pipe.writingEnd(), block.data(), block.size()), static_cast<ssize_t>(block.size()));
        pollfd room{.fd = pipe.writingEnd(), .events = POLLOUT, .revents = 0};
        isFull = ::poll(&room, 1, 0) == 0;
    });
    ASSERT_TRUE(runUntil([&] { return isFull; }));
    ASSERT_TRUE(runFor(step));

    while (pipe.take()) {
    }
    isFull = false;

    EXPECT_TRUE(runUntil([&] { return isFull; }));
}

TEST_P(RunLoopContract, DestroyingTheHandleEndsAWritingWatchAlsoInItsOwnTask) {
    const WatchedPipe pipe;
    RunLoop::Handle watching;
    int runs = 0;
    watching = watchForRoom(pipe.writingEnd(), [&] {
        ++runs;
        watching.reset();
    });

    ASSERT_TRUE(runFor(2 * step));

    EXPECT_EQ(runs, 1);
}

TEST_P(RunLoopContract, OneDescriptorMayBeWatchedForReadingAndWriting) {
    const auto [near, far] = socketPair();
    std::vector<std::string> ran;
    driver().isWatched(near.get());
    char byte = 0;
    const auto reading = loop().watchReadable(near.get(), [&] {
        EXPECT_EQ(::read(near.get(), &byte, 1), 1);
        ran.emplace_back("reading");
    });
    RunLoop::Handle writing = loop().watchWritable(near.get(), [&] {
        writing.reset();
        ran.emplace_back("writing");
    });
    ASSERT_NE(reading, nullptr);
    ASSERT_NE(writing, nullptr);
    ASSERT_TRUE(runFor(step));
    EXPECT_THAT(ran, testing::ElementsAre("writing"));

    ASSERT_EQ(::write(far.get(), "x", 1), 1);
    ASSERT_TRUE(runUntil([&] { return ran.size() >= 2; }));
    ASSERT_TRUE(runFor(step));

    EXPECT_THAT(ran, testing::ElementsAre("writing", "reading"));
}

TEST_P(RunLoopContract, TheEndOfOneWatchLeavesTheOtherOfTheSameDescriptor) {
    const auto [near, far] = socketPair();
    int readingRuns = 0;
    int writingRuns = 0;
    driver().isWatched(near.get());
    RunLoop::Handle writing = loop().watchWritable(near.get(), [&] { ++writingRuns; });
    RunLoop::Handle reading = loop().watchReadable(near.get(), [&] {
        ++readingRuns;
        reading.reset();
    });
    ASSERT_EQ(::write(far.get(), "unread", 6), 6);
    ASSERT_TRUE(runUntil([&] { return readingRuns > 0; }));
    const int before = writingRuns;

    EXPECT_TRUE(runUntil([&] { return writingRuns >= before + 3; }));

    EXPECT_EQ(readingRuns, 1);
}

TEST_P(RunLoopContract, ASecondWatchOfTheSameKindGetsNoHandle) {
    const WatchedPipe pipe;
    std::string taken;
    auto first = watch(pipe, [&] { taken += pipe.take().value_or('?'); });

    EXPECT_EQ(watch(pipe, [] { ADD_FAILURE() << "not watched"; }), nullptr);

    pipe.put("x");
    EXPECT_TRUE(runUntil([&] { return !taken.empty(); }));
    EXPECT_EQ(taken, "x");
}

} // namespace tarnwick
