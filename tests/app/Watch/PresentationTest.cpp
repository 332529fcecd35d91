// The ways in which the terminal program writes lines on its standard output.
#include "app/Watch/Presentation.h"

#include "tests/app/Watch/OutputPipe.h"
#include "tests/app/WatchedMonitor.h"
#include "tests/core/Required.h"

#include <algorithm>
#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace tarnwick {

namespace {

/// Puts another descriptor in the place of standard output, or of standard error, for a while.
class Redirection {
public:
    explicit Redirection(int target, int standard = STDOUT_FILENO) : standard_(standard) {
        std::fflush(stdout);
        before_ = FileDescriptor(::dup(standard));
        ::dup2(target, standard);
    }

    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

    ~Redirection() { ::dup2(before_.get(), standard_); }

private:
    int standard_;
    FileDescriptor before_;
};

class PresentationTest : public testing::Test, protected WatchedMonitor {
protected:
    /// What `presentation` writes when it is shown.
    template<class Shown>
    [[nodiscard]] std::string written(Shown& presentation) const {
        {
            const Redirection redirection(pipe_.writingEnd());
            presentation.show(loop.now());
        }
        return pipe_.read();
    }

    /// The menu titles written in the next `seconds`, one each second.
    [[nodiscard]] std::vector<std::string> titles(JsonPresentation& presentation, int seconds) {
        std::vector<std::string> titles;
        for (int second = 0; second < seconds; ++second) {
            loop.advance(1);
            titles.push_back(nlohmann::json::parse(written(presentation))["menuTitle"]);
        }
        return titles;
    }

    [[nodiscard]] Presentation::Quit quit() {
        return [this](const std::string& problem) { problems_.push_back(problem); };
    }

    /// One ping of the first twenty seconds is lost.
    void loseOnePing() {
        network.setBehavior(
            [this](const auto&) { return simulation::Answer{.copies = ++sent_ == 15 ? 0 : 1}; });
    }

    OutputPipe pipe_;
    std::vector<std::string> problems_; ///< with which the end was asked for; empty texts for none
    int sent_ = 0;
};

const std::string noLossSuffix = "20ms";
const std::string heldSuffix = "20ms (0%)";

} // namespace

TEST_F(PresentationTest, JsonIsOneObjectALine) {
    JsonPresentation presentation(loop, monitor.observedReading(), quit());
    watchFor(3.5);

    const std::string lines = written(presentation) + written(presentation);

    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 2);
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        EXPECT_TRUE(nlohmann::json::parse(line).is_object());
    }
}

TEST_F(PresentationTest, JsonShowsAHostThatIsLongerThanAPipeTakesAtOnce) {
    JsonPresentation presentation(loop, monitor.observedReading(), quit());
    const std::string host(5000, 'h');
    resolve(host, "192.0.2.7");
    prefs.setHostname(host);
    watchFor(3.5);

    EXPECT_EQ(nlohmann::json::parse(written(presentation))["host"], host);
}

TEST_F(PresentationTest, JsonHasTheTitleWithoutLossWhileThereIsNone) {
    JsonPresentation presentation(loop, monitor.observedReading(), quit());
    monitor.start();

    EXPECT_THAT(titles(presentation, 30), testing::Each(noLossSuffix));
}

TEST_F(PresentationTest, JsonHoldsTheLossInTheTitleForTenSecondsAfterItHasEnded) {
    loseOnePing();
    JsonPresentation presentation(loop, monitor.observedReading(), quit());
    monitor.start();

    const auto shown = titles(presentation, 90);

    // The update in which the tenth second is over shows the loss no more.
    EXPECT_EQ(std::ranges::count(shown, heldSuffix), 9);
    const auto isLossy = [](const std::string& title) {
        return title != noLossSuffix && title != heldSuffix;
    };
    EXPECT_GE(std::ranges::count_if(shown, isLossy), 20);
    EXPECT_EQ(shown.front(), noLossSuffix);
    EXPECT_EQ(shown.back(), noLossSuffix);
}

TEST_F(PresentationTest, JsonAlwaysHasTheLossInTheTitleWhenThatIsWanted) {
    prefs.setLossTextMode(MenuBarTitle::LossMode::always);
    JsonPresentation presentation(loop, monitor.observedReading(), quit());
    monitor.start();

    EXPECT_THAT(titles(presentation, 10), testing::Each(heldSuffix));
}

TEST_F(PresentationTest, JsonNeverHasTheLossInTheTitleWhenItIsSwitchedOff) {
    prefs.setLossTextMode(MenuBarTitle::LossMode::off);
    loseOnePing();
    JsonPresentation presentation(loop, monitor.observedReading(), quit());
    monitor.start();

    EXPECT_THAT(titles(presentation, 60), testing::Each(noLossSuffix));
}

TEST_F(PresentationTest, PlainIsOneLineAShowing) {
    PlainPresentation presentation(loop, monitor.observedReading(), quit());
    watchFor(3.5);

    const std::string line = written(presentation);

    EXPECT_THAT(line, testing::HasSubstr("Excellent"));
    EXPECT_EQ(line.find('\n'), line.size() - 1);
}

TEST_F(PresentationTest, AClosedPipeEndsTheProgramWithoutAComplaint) {
    JsonPresentation json(loop, monitor.observedReading(), quit());
    PlainPresentation plain(loop, monitor.observedReading(), quit());
    pipe_.closeReader();

    static_cast<void>(written(json));
    EXPECT_THAT(problems_, testing::ElementsAre(""));
    static_cast<void>(written(plain));
    EXPECT_THAT(problems_, testing::ElementsAre("", ""));
}

TEST_F(PresentationTest, ASlowReaderEndsNothing) {
    JsonPresentation presentation(loop, monitor.observedReading(), quit());
    pipe_.makeNonBlocking();
    pipe_.write(std::string(pipe_.capacity(), '.'));
    {
        const Redirection redirection(pipe_.writingEnd());
        presentation.show(loop.now());
    }

    EXPECT_THAT(problems_, testing::IsEmpty());
    EXPECT_EQ(pipe_.read(), std::string(pipe_.capacity(), '.'));
}

TEST_F(PresentationTest, OutputThatCannotBeWrittenEndsTheProgramWithTheReason) {
    const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    if (!full.isOpen()) {
        TARNWICK_CANNOT_RUN("this system has no /dev/full");
    }
    PlainPresentation presentation(loop, monitor.observedReading(), quit());
    {
        const Redirection redirection(full.get());
        presentation.show(loop.now());
    }

    EXPECT_THAT(problems_, testing::ElementsAre(testing::HasSubstr("No space left on device")));
}

// Notices beside the lines.

class NoticeLinesTest : public PresentationTest {
protected:
    /// What is written on standard error when `change` has happened.
    template<class Change>
    [[nodiscard]] std::string toldAfter(Change change) {
        {
            const Redirection redirection(pipe_.writingEnd(), STDERR_FILENO);
            change();
            loop.runPending();
        }
        return pipe_.read();
    }

    [[nodiscard]] std::string toldOf(Notice::Kind kind, const std::string& text) {
        return toldAfter([&] { monitor.setNotice({.kind = kind, .text = text}); });
    }

private:
    JsonPresentation presentation_{loop, monitor.observedReading(), quit()};
};

TEST_F(NoticeLinesTest, EachIsALineOnStandardError) {
    const std::string told = toldAfter([this] {
        monitor.setNotice({.kind = Notice::Kind::noPanel, .text = "second"});
        monitor.setNotice({.kind = Notice::Kind::settingsMistake, .text = "first:", .command = "edit"});
    });

    EXPECT_EQ(told, "tarnwick-watch: first: edit\ntarnwick-watch: second\n");
}

TEST_F(NoticeLinesTest, ANoticeThatStillHoldsIsNotToldAgain) {
    static_cast<void>(toldOf(Notice::Kind::noPanel, "first"));

    EXPECT_EQ(toldOf(Notice::Kind::settingsMistake, "second"), "tarnwick-watch: second\n");
    EXPECT_EQ(toldAfter([this] { monitor.clearNotice(Notice::Kind::noPanel); }), "");
    EXPECT_EQ(toldAfter([this] { watchFor(30); }), "");
}

TEST_F(NoticeLinesTest, ANoticeThatHoldsAgainIsToldAgain) {
    static_cast<void>(toldOf(Notice::Kind::noPanel, "first"));
    EXPECT_EQ(toldAfter([this] { monitor.clearNotice(Notice::Kind::noPanel); }), "");

    EXPECT_EQ(toldOf(Notice::Kind::noPanel, "first"), "tarnwick-watch: first\n");
}

TEST_F(NoticeLinesTest, ATerminalGetsNoControlCharactersOfATextFromOutside) {
    EXPECT_EQ(toldOf(Notice::Kind::settingsMistake, "key \x1b[2J").find('\x1b'), std::string::npos);
}

} // namespace tarnwick
