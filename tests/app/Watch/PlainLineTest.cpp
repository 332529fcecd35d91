// A reading in one line of plain text.
#include "app/Watch/PlainLine.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

class PlainLineTest : public testing::Test {
protected:
    PlainLineTest() { inTimeZone("UTC0"); }

    ~PlainLineTest() override {
        ::unsetenv("TZ");
        ::tzset();
    }

    static void inTimeZone(const char* name) {
        ::setenv("TZ", name, 1);
        ::tzset();
    }

    [[nodiscard]] std::string line() const {
        return plainLine(reading_, RunLoop::WallTime(std::chrono::seconds(1'709'251'199)));
    }

    /// Makes it one of a working connection.
    void work() {
        reading_.qualityTitle = "Excellent";
        reading_.latencyText = "40 ms";
        reading_.lossText = "0% loss";
        reading_.hostLine = "1.1.1.1";
    }

    void goDown() {
        reading_.qualityTitle = "Connection down";
        reading_.latencyText = "Down";
        reading_.lossText.reset();
        reading_.hostLine = "No replies for 8 s";
    }

    Reading reading_;
};

/// The column, in characters, at which `part` begins.
std::ptrdiff_t columnOf(const std::string& line, const std::string& part) {
    const std::size_t at = line.find(part);
    EXPECT_NE(at, std::string::npos) << line;
    return std::count_if(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(at), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
    });
}

} // namespace

TEST_F(PlainLineTest, HasTimeQualityLatencyLossAndHostInColumns) {
    work();
    EXPECT_EQ(line(), "2024-02-29 23:59:59  Excellent             40 ms   0% loss  1.1.1.1\n");

    goDown();
    EXPECT_EQ(line(), "2024-02-29 23:59:59  Connection down        Down            No replies for 8 s\n");
}

TEST_F(PlainLineTest, APauseStandsInTheColumns) {
    work();
    const std::ptrdiff_t host = columnOf(line(), "1.1.1.1");

    reading_.qualityTitle = "Paused until 15:30";
    reading_.latencyText = "–";
    reading_.lossText.reset();
    EXPECT_EQ(columnOf(line(), "1.1.1.1"), host);
    EXPECT_EQ(line(), "2024-02-29 23:59:59  Paused until 15:30        –            1.1.1.1\n");
}

TEST_F(PlainLineTest, AVerdictStandsAtTheEnd) {
    goDown();
    reading_.verdict = {.blame = Blame::provider, .evidence = "Your router answers."};

    EXPECT_THAT(line(), testing::EndsWith("  No replies for 8 s  Your router answers.\n"));
}

TEST_F(PlainLineTest, TheTimeIsLocal) {
    inTimeZone("XST-02:30");

    EXPECT_THAT(line(), testing::StartsWith("2024-03-01 02:29:59"));
}

TEST_F(PlainLineTest, CharactersOfSeveralBytesTakeOneColumn) {
    work();
    const std::ptrdiff_t host = columnOf(line(), "1.1.1.1");

    reading_.qualityTitle = "Connecting…";
    reading_.latencyText = "–";
    EXPECT_EQ(columnOf(line(), "1.1.1.1"), host);
}

TEST_F(PlainLineTest, AHostCanNeitherCommandTheTerminalNorTurnTheLineAround) {
    reading_.hostLine = "a\u009B31m\u202Eb";

    EXPECT_THAT(line(), testing::EndsWith("  a?31m?b\n"));
}

TEST_F(PlainLineTest, AHostWithALineBreakStaysOnTheLine) {
    reading_.hostLine = "two\nlines";

    EXPECT_EQ(line().find('\n'), line().size() - 1);
}

} // namespace tarnwick
