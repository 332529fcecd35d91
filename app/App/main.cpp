// tarnwick: the connection's quality in the panel.
#include "app/App/AppDelegate.h"
#include "app/App/BundleParts.h"
#include "app/App/DisplayCheck.h"
#include "app/App/RunningInstance.h"
#include "app/CommandLine/AppOptions.h"
#include "app/CommandLine/ArgumentParser.h"
#include "app/CommandLine/StartUp.h"
#include "platform/bus/InstanceGuard.h"
#include "platform/linux/OwnBundle.h"
#include "platform/linux/OwnIcons.h"
#include "platform/linux/RunningProgram.h"
#include "platform/linux/Sandbox.h"
#include "platform/linux/SignalWatch.h"
#include "platform/loop/EpollRunLoop.h"
#include "platform/ports/ApplicationId.h"
#include "platform/qt/QtLoopHost.h"
#include "platform/qt/ScreenOverlay.h"
#include "platform/qt/WindowSystem.h"
#include "platform/x11/StartupSequence.h"

#include <QApplication>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace tarnwick;
using Instance = InstanceGuard;

/// They end the program after the statistics are saved.
constexpr auto terminationSignals = {SIGTERM, SIGINT, SIGHUP};

Instance::Request requestFor(const AppOptions& options) {
    switch (options.request) {
    case AppOptions::Request::settings:
        return Instance::Request::settings;
    case AppOptions::Request::outages:
        return Instance::Request::outages;
    case AppOptions::Request::stay:
        return Instance::Request::nothing;
    default:
        return Instance::Request::show;
    }
}

/// The exit status of a start that has found another instance.
int statusBesideAnother(Instance::Result result, const AppOptions& options) {
    if (result == Instance::Result::anotherIsSilent) {
        saySilentInstance();
        return EXIT_FAILURE;
    }
    if (!options.settings.empty()) {
        std::fputs("tarnwick: another instance is running; --set can't change its settings\n", stderr);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

void serve(AppDelegate& delegate, const Instance::Start& asked) {
    switch (asked.request) {
    case Instance::Request::nothing:
        break;
    case Instance::Request::show:
        delegate.openDropDown(asked.activationToken);
        break;
    case Instance::Request::settings:
        delegate.openSettings(asked.activationToken);
        break;
    case Instance::Request::pause:
        delegate.pause(asked.pauseSeconds);
        break;
    case Instance::Request::outages:
        delegate.openOutages(asked.activationToken);
        break;
    case Instance::Request::quit:
        QCoreApplication::exit();
        break;
    }
}

struct Ending {
    int status;
    bool wantsRestart; ///< as a newer version, which is in its place or is ready to take it
};

/// The toolkit gets no arguments: this program does not offer its options.
Ending runApplication(
    const AppOptions& options, std::string name, const Instance::LaunchTokens& tokens, BundleRun* bundle) {
    if (bundle != nullptr) {
        BundleParts::prepare(bundle->folder());
    }
    ScreenOverlay::prepare();
    int count = 1;
    std::array<char*, 2> arguments{name.data(), nullptr};
    const QApplication application(count, arguments.data());
    if (bundle != nullptr) {
        BundleParts::bringFont(bundle->folder());
    }
    QApplication::setApplicationName("tarnwick");
    QApplication::setApplicationVersion(TARNWICK_VERSION);
    QGuiApplication::setDesktopFileName(applicationId);
    // The status item stays when the last window is closed.
    QApplication::setQuitOnLastWindowClosed(false);
    EpollRunLoop loop;
    const QtLoopHost host(loop);
    const SignalWatch signals(loop, terminationSignals, [](int /*signal*/) { QCoreApplication::exit(); });
    BusConnection bus(loop, BusConnection::sessionAddress());
    bool wantsRestart = false;
    std::unique_ptr<AppDelegate> delegate;
    const auto begin = [&](Instance::Result result) {
        if (WindowSystem::isX11()) {
            X11::endStartupSequence(tokens.startup);
        }
        if (result == Instance::Result::anotherRuns || result == Instance::Result::anotherIsSilent) {
            QCoreApplication::exit(statusBesideAnother(result, options));
            return;
        }
        delegate = std::make_unique<AppDelegate>(
            loop, bus,
            AppDelegate::Setup{
                .settings = options.settings,
                .version = TARNWICK_VERSION,
                .iconFolder = ownIcons(isSandboxed()).string(),
                .tokenWithoutPanel = options.request == AppOptions::Request::none
                                         ? std::optional(tokens.activation)
                                         : std::nullopt,
                .restart =
                    [&wantsRestart] {
                        wantsRestart = true;
                        QCoreApplication::exit();
                    },
                .bundle = bundle});
        if (options.request != AppOptions::Request::none) {
            serve(*delegate, {.request = requestFor(options), .activationToken = tokens.activation});
        }
    };
    // Its settings can't be changed from here, and it is left alone then.
    const auto request = options.settings.empty() ? requestFor(options) : Instance::Request::nothing;
    InstanceGuard instance(loop, bus, {.request = request, .activationToken = tokens.activation}, begin);
    instance.onRequest = [&](const Instance::Start& asked) {
        if (delegate) {
            serve(*delegate, asked);
        }
    };
    const int status = QApplication::exec();
    return {.status = status, .wantsRestart = wantsRestart};
}

int start(const std::vector<std::string>& arguments, const std::string& name) {
    // A display or a bus may be slow to answer.
    SignalWatch::endProcessUntilWatched(terminationSignals);
    startUp();
    const auto commandLine = parseAppOptions(arguments);
    if (const auto status = answerWithoutRunning(commandLine, TARNWICK_VERSION)) {
        return *status;
    }
    const auto& options = std::get<AppOptions>(commandLine);
    if (options.request == AppOptions::Request::quit) {
        return quitRunningInstance();
    }
    if (options.request == AppOptions::Request::pause) {
        return pauseRunningInstance(options.pauseSeconds);
    }
    if (const auto problem = DisplayCheck::problem()) {
        std::fprintf(stderr, "tarnwick: %s; tarnwick-watch shows the same in a terminal\n", problem->c_str());
        return EXIT_FAILURE;
    }
    std::optional<BundleRun> bundle;
    const auto program = runningProgram(); // later the path may be that of the version before
    if (const auto folder = ownBundle(program)) {
        bundle.emplace(*folder, arguments);
    }
    const Ending ending =
        runApplication(options, name, Instance::takeLaunchTokens(), bundle ? &*bundle : nullptr);
    if (bundle && ending.wantsRestart) {
        bundle->endForRestart(options.forRestart());
    } else if (bundle) {
        bundle->end(); // also where it only had to tell that another instance does not answer
    }
    if (ending.wantsRestart) {
        if (program) {
            becomeProgram(*program, options.forRestart());
        }
        std::fputs("tarnwick: the new version could not be started\n", stderr);
        return EXIT_FAILURE;
    }
    return ending.status;
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
