#include "platform/qt/DesktopOpener.h"

#include "platform/qt/WindowSystem.h"
#include "platform/wayland/ActivationToken.h"

#include <QGuiApplication>
#include <QProcess>
#include <QProcessEnvironment>
#include <QScreen>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

#include <csignal>
#include <cstdint>
#include <string>
#include <unistd.h>
#include <utility>

namespace tarnwick {

namespace {

/// In the child, which must outlive this program.
void standAlone() {
    setsid();
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// With it the started program's window comes to the front on Wayland. Empty elsewhere, and while no window
/// of ours has the keyboard.
std::string tokenForAnother() {
    QPlatformNativeInterface* const native = QGuiApplication::platformNativeInterface();
    QWindow* const window = QGuiApplication::focusWindow();
    wl_display* const display = WindowSystem::waylandDisplay();
    if (display == nullptr || window == nullptr) {
        return "";
    }
    auto* const seat = static_cast<wl_seat*>(native->nativeResourceForIntegration("wl_seat"));
    auto* const surface = static_cast<wl_surface*>(native->nativeResourceForWindow("surface", window));
    if (seat == nullptr || surface == nullptr) {
        return "";
    }
    const auto serial = reinterpret_cast<std::uintptr_t>(native->nativeResourceForIntegration("serial"));
    return Wayland::activationToken(
        {.display = *display,
         .seat = *seat,
         .surface = *surface,
         .serial = static_cast<std::uint32_t>(serial)});
}

/// With it the started program's window counts on X11 as wanted at the user's latest click or key here. Empty
/// elsewhere, and before that.
std::string startupIdForAnother() {
    if (!WindowSystem::isX11()) {
        return "";
    }
    const auto wanted =
        reinterpret_cast<std::uintptr_t>(QGuiApplication::platformNativeInterface()->nativeResourceForScreen(
            "appusertime", QGuiApplication::primaryScreen()));
    static int started = 0;
    return wanted == 0 ? ""
                       : "tarnwick-" + std::to_string(::getpid()) + "-" + std::to_string(++started) + "_TIME"
                             + std::to_string(wanted);
}

QProcessEnvironment environmentForAnother() {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (const std::string token = tokenForAnother(); !token.empty()) {
        environment.insert("XDG_ACTIVATION_TOKEN", QString::fromStdString(token));
    }
    if (const std::string id = startupIdForAnother(); !id.empty()) {
        environment.insert("DESKTOP_STARTUP_ID", QString::fromStdString(id));
    }
    return environment;
}

} // namespace

void startBeside(const QString& program, const QStringList& arguments, DesktopOpened ended) {
    // Without a parent, whose end would kill the process. It deletes itself.
    auto* const opener = new QProcess; // NOLINT(cppcoreguidelines-owning-memory)
    opener->setStandardInputFile(QProcess::nullDevice());
    opener->setStandardOutputFile(QProcess::nullDevice());
    opener->setStandardErrorFile(QProcess::nullDevice());
    opener->setChildProcessModifier(standAlone);
    opener->setProcessEnvironment(environmentForAnother());
    const auto finish = [opener, ended = std::move(ended)](bool isOpened) {
        if (ended) {
            ended(isOpened);
        }
        opener->deleteLater();
    };
    QObject::connect(opener, &QProcess::finished, opener, [finish](int code, QProcess::ExitStatus status) {
        // Ended by a signal: it ran, so it had opened something.
        finish(code == 0 || status == QProcess::CrashExit);
    });
    QObject::connect(opener, &QProcess::errorOccurred, opener, [finish](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            finish(false);
        }
    });
    opener->start(program, arguments);
}

} // namespace tarnwick
