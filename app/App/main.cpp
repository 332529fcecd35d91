// tarnwick: the connection's quality in the panel.
#include "app/App/AppDelegate.h"
#include "app/App/DisplayCheck.h"
#include "app/CommandLine/AppOptions.h"
#include "app/CommandLine/ArgumentParser.h"
#include "app/CommandLine/StartUp.h"
#include "platform/bus/InstanceGuard.h"
#include "platform/linux/SignalWatch.h"
#include "platform/loop/EpollRunLoop.h"
#include "platform/qt/QtLoopHost.h"

#include <QApplication>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace tarnwick;

/// They end the program after the statistics are saved.
constexpr auto terminationSignals = {SIGTERM, SIGINT, SIGHUP};

/// The toolkit gets no arguments: this program does not offer its options.
int runApplication(const AppOptions& options, std::string name, std::string startToken) {
    int count = 1;
    std::array<char*, 2> arguments{name.data(), nullptr};
    const QApplication application(count, arguments.data());
    QApplication::setApplicationName("tarnwick");
    QApplication::setApplicationVersion(TARNWICK_VERSION);
    QGuiApplication::setDesktopFileName("tarnwick");
    // The status item stays when the last window is closed.
    QApplication::setQuitOnLastWindowClosed(false);
    EpollRunLoop loop;
    const QtLoopHost host(loop);
    const SignalWatch signals(loop, terminationSignals, [](int /*signal*/) { QCoreApplication::exit(); });
    BusConnection bus(loop, BusConnection::sessionAddress());
    std::unique_ptr<AppDelegate> delegate;
    const auto begin = [&](InstanceGuard::Result result) {
        if (result == InstanceGuard::Result::anotherRuns) {
            QCoreApplication::quit();
            return;
        }
        if (result == InstanceGuard::Result::anotherIsSilent) {
            std::fputs("tarnwick: another instance is running, but it does not answer\n", stderr);
            QCoreApplication::exit(EXIT_FAILURE);
            return;
        }
        delegate = std::make_unique<AppDelegate>(
            loop, bus,
            AppDelegate::Setup{
                .settings = options.settings,
                .version = TARNWICK_VERSION,
                .iconFolder = TARNWICK_ICON_FOLDER});
    };
    InstanceGuard instance(loop, bus, std::move(startToken), begin);
    instance.onActivate = [&](const std::string& activationToken) {
        if (delegate) {
            delegate->openDropDown(activationToken);
        }
    };
    return QApplication::exec();
}

int start(const std::vector<std::string>& arguments, const std::string& name) {
    // A display or a bus may be slow to answer.
    SignalWatch::endProcessUntilWatched(terminationSignals);
    startUp();
    const auto commandLine = parseAppOptions(arguments);
    if (const auto status = answerWithoutRunning({"tarnwick", TARNWICK_VERSION}, commandLine)) {
        return *status;
    }
    if (const auto problem = DisplayCheck::problem()) {
        std::fprintf(stderr, "tarnwick: %s; tarnwick-watch shows the same in a terminal\n", problem->c_str());
        return EXIT_FAILURE;
    }
    return runApplication(std::get<AppOptions>(commandLine), name, InstanceGuard::takeActivationToken());
}

} // namespace

int main(int argc, char* argv[]) {
    try {
        return start(argumentsOf(argc, argv), argc > 0 ? argv[0] : "tarnwick");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tarnwick: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
