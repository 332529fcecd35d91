// tarnwick-watch: the connection's quality in a terminal.
#include "app/CommandLine/ArgumentParser.h"
#include "app/CommandLine/ReportOptions.h"
#include "app/CommandLine/StartUp.h"
#include "app/CommandLine/WatchOptions.h"
#include "app/Surroundings/SystemSurroundings.h"
#include "app/UserSettings/UserSettings.h"
#include "app/Watch/ReportRun.h"
#include "app/Watch/Watch.h"
#include "platform/bus/DesktopNotificationCenter.h"
#include "platform/journal/SqliteJournal.h"
#include "platform/linux/OwnBundle.h"
#include "platform/linux/OwnIcons.h"
#include "platform/linux/ProgramReplacement.h"
#include "platform/linux/RunningProgram.h"
#include "platform/linux/Sandbox.h"
#include "platform/linux/SignalWatch.h"
#include "platform/loop/EpollRunLoop.h"
#include "platform/xdg/SettingsFile.h"

#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <optional>

namespace {

using namespace tarnwick;

constexpr auto watchedSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGWINCH};

/// Terminals show UTF-8 even if no language is set.
void takeCharacterSet() {
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        if (const char* value = std::getenv(variable); value != nullptr && *value != '\0') {
            std::setlocale(LC_CTYPE, "");
            return;
        }
    }
    std::setlocale(LC_CTYPE, "C.UTF-8");
}

std::unique_ptr<Presentation> makePresentation(
    const WatchOptions& options, RunLoop& loop, Monitor& monitor, Presentation::Quit quit) {
    const Observed<Reading>& reading = monitor.observedReading();
    if (options.json) {
        return std::make_unique<JsonPresentation>(loop, reading, std::move(quit));
    }
    if (auto terminal = Terminal::open()) {
        const PastSource past{
            .read = [&monitor](const Span& span) { return monitor.history(span); },
            .whyEmpty = [&monitor] { return monitor.whyNoHistory(); }};
        return std::make_unique<ScreenPresentation>(
            loop, reading, past, std::move(terminal),
            ScreenPresentation::Commands{
                .quit = std::move(quit), .togglePause = [&monitor] { monitor.togglePause(); }});
    }
    return std::make_unique<PlainPresentation>(loop, reading, std::move(quit));
}

/// The model and all that it needs from the system.
class Service {
public:
    explicit Service(UserDefaults::Table forThisRun)
        : settings_(loop_, SettingsFile::defaultPath(), std::move(forThisRun)) {
        settings_.tellMistakes(
            [this](const std::vector<std::string>& mistakes) { monitor_.setSettingsMistakes(mistakes); });
    }

    [[nodiscard]] EpollRunLoop& loop() { return loop_; }

    [[nodiscard]] Monitor& monitor() { return monitor_; }

    /// A newer version has taken the place of this one. Set before the loop runs.
    std::function<void()> onReplaced;

private:
    EpollRunLoop loop_;
    UserSettings settings_;
    SystemSurroundings surroundings_{loop_};
    // Only for notifications: opened when they are wanted.
    BusConnection sessionBus_{loop_, BusConnection::sessionAddress(), BusConnection::Opening::whenNeeded};
    DesktopNotificationCenter notifications_{
        loop_,
        sessionBus_,
        DesktopNotificationCenter::surroundings(isSandboxed()),
        ownIcons(isSandboxed()),
        DesktopNotificationCenter::usualPatience,
        NameClaim::Rank::ordinary};
    Monitor monitor_{settings_.preferences(), surroundings_.environment(notifications_)};
    ProgramReplacement replacement_{loop_, [this] { onReplaced(); }};
};

/// What is to be said once the terminal has been restored.
struct Ending {
    std::string problem;       ///< why the program ended; empty: it was told to
    std::string unsaved;       ///< why the last save failed; empty: it did not
    bool wantsRestart = false; ///< of the newer version that has taken this one's place
};

std::string reasonOfFailedSave(const Monitor& monitor) {
    const std::string& problem = monitor.measured().recordingProblem;
    return problem.empty() ? "" : "the statistics could not be stored: " + problem;
}

Ending run(const WatchOptions& options) {
    // What arrives before they are watched waits until then.
    SignalWatch::block(watchedSignals);
    // A bundle is replaced by the updater, and goes on as the newer version. A run of a given length does not
    // begin anew.
    const bool followsUpdates = ownBundle() && !options.forSeconds;
    bool wantsRestart = false;
    Service service(options.settings);
    EpollRunLoop& loop = service.loop();
    service.onReplaced = [&] {
        wantsRestart = followsUpdates;
        if (followsUpdates) {
            loop.stop();
        } else {
            service.monitor().setNotice(newVersionNotice());
        }
    };
    std::string problem;
    const auto quit = [&](const std::string& why) {
        problem = why;
        loop.stop();
    };
    Watch watch(loop, service.monitor(), makePresentation(options, loop, service.monitor(), quit));
    const SignalWatch signals(loop, watchedSignals, [&](int signal) {
        if (signal == SIGWINCH) {
            watch.windowResized();
        } else {
            quit({});
        }
    });
    watch.start();
    const RunLoop::Handle end =
        options.forSeconds ? loop.after(*options.forSeconds, [&quit] { quit({}); }) : nullptr;
    loop.run();
    service.monitor().saveStats();
    return {
        .problem = problem, .unsaved = reasonOfFailedSave(service.monitor()), .wantsRestart = wantsRestart};
}

/// Reads beside a program that writes, and changes nothing.
int report(const std::vector<std::string>& arguments) {
    const auto commandLine = parseReportOptions(arguments);
    if (const auto status = answerWithoutRunning(commandLine, TARNWICK_VERSION)) {
        return *status;
    }
    EpollRunLoop loop;
    UserSettings settings(loop, SettingsFile::defaultPath(), {});
    SqliteJournal journal(SqliteJournal::defaultPath());
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    const auto told = reportFor(
        journal, std::get<ReportOptions>(commandLine), settings.preferences().hostname(),
        {.version = TARNWICK_VERSION, .made = now}, systemUtcOffset);
    if (const auto* const error = std::get_if<UsageError>(&told)) {
        return refuse(ReportOptions::table(), *error);
    }
    const auto& [text, hint] = std::get<ToldReport>(told);
    const bool isWritten = std::fputs(text.c_str(), stdout) != EOF && std::fflush(stdout) == 0;
    if (!hint.empty()) {
        std::fprintf(stderr, "tarnwick-watch report: %s\n", hint.c_str());
    }
    return isWritten ? EXIT_SUCCESS : EXIT_FAILURE;
}

int start(const std::vector<std::string>& arguments) {
    startUp();
    takeCharacterSet();
    if (!arguments.empty() && arguments.front() == ReportOptions::command) {
        return report({arguments.begin() + 1, arguments.end()});
    }
    const auto commandLine = parseWatchOptions(arguments);
    if (const auto status = answerWithoutRunning(commandLine, TARNWICK_VERSION)) {
        return *status;
    }
    const auto program = runningProgram(); // later the path may be that of the version before
    const Ending ending = run(std::get<WatchOptions>(commandLine));
    if (ending.wantsRestart && program) {
        becomeProgram(*program, arguments);
    }
    for (const std::string& words : {ending.unsaved, ending.problem}) {
        if (!words.empty()) {
            std::fprintf(stderr, "tarnwick-watch: %s\n", words.c_str());
        }
    }
    return ending.problem.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char* argv[]) {
    // Only a lack of memory throws. The terminal is restored before the message is written.
    try {
        return start(argumentsOf(argc, argv));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tarnwick-watch: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
