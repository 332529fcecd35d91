// The state of the connection in one line of plain text.
#include "app/Watch/PlainLine.h"

#include "tests/app/WatchedMonitor.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::HasSubstr;

class PlainLineTest : public testing::Test, protected WatchedMonitor {
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
        return plainLine(monitor, RunLoop::WallTime(std::chrono::seconds(1'709'251'199)));
    }
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

TEST_F(PlainLineTest, SaysTimeQualityLatencyLossAndHost) {
    answerAfter(0.04);
    watchFor(5.5);

    const std::string text = line();

    EXPECT_THAT(text, testing::StartsWith("2024-02-29 23:59:59"));
    for (const char* part : {"Excellent", "40 ms", "0% loss", "1.1.1.1"}) {
        EXPECT_THAT(text, HasSubstr(part));
    }
}

TEST_F(PlainLineTest, EndsWithItsOnlyLineBreak) {
    watchFor(5.5);

    EXPECT_EQ(line().find('\n'), line().size() - 1);
}

TEST_F(PlainLineTest, TheTimeIsLocal) {
    inTimeZone("XST-02:30");

    EXPECT_THAT(line(), testing::StartsWith("2024-03-01 02:29:59"));
}

TEST_F(PlainLineTest, BeforeTheFirstReplyItIsConnecting) {
    fallSilent();
    watchFor(0.5);

    EXPECT_THAT(line(), HasSubstr("Connecting…"));
    EXPECT_THAT(line(), HasSubstr("–"));
}

TEST_F(PlainLineTest, WhileDownItNamesTheReasonInsteadOfTheHost) {
    fallSilent();
    monitor.start();
    ASSERT_TRUE(waitUntilDown());

    EXPECT_THAT(line(), HasSubstr("Connection down"));
    EXPECT_THAT(line(), HasSubstr("No replies for 8 s"));
    EXPECT_THAT(line(), testing::Not(HasSubstr("loss")));
}

TEST_F(PlainLineTest, TheColumnsStayWhereTheyAre) {
    fallSilent();
    watchFor(0.5);
    const std::ptrdiff_t connecting = columnOf(line(), "1.1.1.1");

    answerAfter(0.04);
    loop.advance(5);
    EXPECT_EQ(columnOf(line(), "1.1.1.1"), connecting);

    fallSilent();
    ASSERT_TRUE(waitUntilDown());
    EXPECT_EQ(columnOf(line(), "No replies"), connecting);
}

TEST_F(PlainLineTest, AHostWithALineBreakStaysOnTheLine) {
    prefs.setHostname("two\nlines");
    resolve("two\nlines", "192.0.2.7");
    watchFor(1.5);

    EXPECT_EQ(line().find('\n'), line().size() - 1);
}

} // namespace tarnwick
