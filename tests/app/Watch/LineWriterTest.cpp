// Whole lines to a pipe or file, never waiting for a slow reader.
#include "app/Watch/LineWriter.h"

#include "tests/app/Watch/OutputPipe.h"
#include "tests/core/Required.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>

namespace tarnwick {

namespace {

using Written = LineWriter::Written;

class LineWriterTest : public testing::Test {
protected:
    /// Writes lines of a hundred bytes until one is left out; their number.
    int fill() {
        int whole = 0;
        while (whole < 100'000 && writer_.write(line_) == Written::taken) {
            ++whole;
        }
        return whole;
    }

    OutputPipe pipe_;
    LineWriter writer_{pipe_.writingEnd()};
    std::string line_ = std::string(99, 'x') + "\n";
};

/// A terminal whose window is read only when the test reads it. It takes a part of a line where a pipe takes
/// none.
class SlowTerminal {
public:
    SlowTerminal() {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(::openpty(ends.data(), &ends[1], nullptr, nullptr, nullptr), 0);
        window_ = FileDescriptor(ends[0]);
        program_ = FileDescriptor(ends[1]);
        termios mode{};
        ::tcgetattr(program_.get(), &mode);
        ::cfmakeraw(&mode);
        ::tcsetattr(program_.get(), TCSANOW, &mode);
        for (const FileDescriptor* end : {&window_, &program_}) {
            ::fcntl(end->get(), F_SETFL, O_RDWR | O_NONBLOCK);
        }
    }

    [[nodiscard]] int writingEnd() const { return program_.get(); }

    /// Reads what has arrived; waits for the first of it.
    [[nodiscard]] std::string read() const {
        std::array<char, 4096> buffer{};
        pollfd input{.fd = window_.get(), .events = POLLIN, .revents = 0};
        EXPECT_EQ(::poll(&input, 1, patienceMs), 1);
        const ssize_t count = ::read(window_.get(), buffer.data(), buffer.size());
        return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    }

private:
    static constexpr int patienceMs = 20'000;

    FileDescriptor window_;
    FileDescriptor program_;
};

} // namespace

TEST_F(LineWriterTest, ALineIsWrittenAtOnce) {
    EXPECT_EQ(writer_.write("a line\n"), Written::taken);

    EXPECT_EQ(pipe_.read(), "a line\n");
}

TEST_F(LineWriterTest, LinesKeepTheirOrder) {
    writer_.write("first\n");
    writer_.write("second\n");

    EXPECT_EQ(pipe_.read(), "first\nsecond\n");
}

TEST_F(LineWriterTest, ALineIsLeftOutAtOnceWhenTheReaderIsFarBehind) {
    fill();

    EXPECT_EQ(writer_.write(line_), Written::leftOut);
}

TEST_F(LineWriterTest, WhatASlowReaderFindsIsWholeLines) {
    const int whole = fill();
    ASSERT_GT(whole, 100);

    std::string expected;
    for (int line = 0; line < whole; ++line) {
        expected += line_;
    }
    EXPECT_EQ(pipe_.read(), expected);
}

TEST_F(LineWriterTest, ANonBlockingPipeIsFilledWithWholeLinesToo) {
    pipe_.makeNonBlocking();
    const auto whole = static_cast<std::size_t>(fill());

    EXPECT_EQ(pipe_.read().size(), whole * line_.size());
}

TEST_F(LineWriterTest, ALineLongerThanThePipeArrivesInFullWithoutWaiting) {
    const std::string longLine = std::string(3 * pipe_.capacity(), 'x') + "\n";

    EXPECT_EQ(writer_.write(longLine), Written::taken);

    std::string text = pipe_.read();
    while (writer_.write("last\n") != Written::taken && !HasFailure()) {
        text += pipe_.read();
    }
    text += pipe_.read();
    EXPECT_TRUE(text == longLine + "last\n") << text.size() << " bytes";
}

TEST_F(LineWriterTest, GoesOnWhenTheReaderHasCaughtUp) {
    fill();
    static_cast<void>(pipe_.read());

    EXPECT_EQ(writer_.write("again\n"), Written::taken);
    EXPECT_EQ(pipe_.read(), "again\n");
}

TEST_F(LineWriterTest, TellsWhenTheReaderHasGone) {
    pipe_.closeReader();

    EXPECT_EQ(writer_.write(line_), Written::closed);
}

TEST_F(LineWriterTest, TellsItForALongLineToo) {
    pipe_.closeReader();

    EXPECT_EQ(writer_.write(std::string(9999, 'x') + "\n"), Written::closed);
}

TEST_F(LineWriterTest, TellsWhenTheReaderOfAFullPipeHasGone) {
    fill();
    pipe_.closeReader();

    EXPECT_EQ(writer_.write(line_), Written::closed);
}

TEST(LineWriter, ATerminalThatTookHalfALineGetsTheRestBeforeTheNextOne) {
    const std::string line = std::string(3999, 'x') + "\n";
    // In most rounds the terminal's room ends inside a line of this length.
    for (int round = 0; round < 5 && !testing::Test::HasFailure(); ++round) {
        const SlowTerminal terminal;
        LineWriter writer(terminal.writingEnd());
        std::string expected;
        while (expected.size() < 1'000'000 && writer.write(line) == Written::taken) {
            expected += line;
        }
        expected += "last\n";

        std::string text = terminal.read();
        while (writer.write("last\n") != Written::taken && !testing::Test::HasFailure()) {
            text += terminal.read();
        }
        while (text.size() < expected.size() && !testing::Test::HasFailure()) {
            text += terminal.read();
        }

        EXPECT_TRUE(text == expected) << text.size() << " bytes instead of " << expected.size();
    }
}

TEST(LineWriter, ADescriptorThatIsNotOpenCountsAsClosed) {
    EXPECT_EQ(LineWriter(1'000'000).write("x\n"), Written::closed);
}

TEST(LineWriter, AFileTakesEveryLineHoweverLong) {
    const test::TemporaryFolder folder;
    const auto path = folder.path() / "log";
    const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    LineWriter writer(file.get());

    EXPECT_EQ(writer.write("first\n"), Written::taken);
    EXPECT_EQ(writer.write(std::string(99'999, 'x') + "\n"), Written::taken);

    EXPECT_EQ(test::contentOf(path), "first\n" + std::string(99'999, 'x') + "\n");
}

TEST(LineWriter, TellsThatTheDiskIsFull) {
    const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    if (!full.isOpen()) {
        TARNWICK_CANNOT_RUN("this system has no /dev/full");
    }

    LineWriter writer(full.get());

    EXPECT_EQ(writer.write("x\n"), Written::failed);
    EXPECT_EQ(writer.error(), std::errc::no_space_on_device);
}

} // namespace tarnwick
