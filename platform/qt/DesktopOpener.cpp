#include "platform/qt/DesktopOpener.h"

#include "platform/qt/WindowSystem.h"
#include "platform/wayland/ActivationToken.h"

#include <QGuiApplication>
#include <QProcess>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

#include <csignal>
#include <cstdint>
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
    if (!WindowSystem::isWayland() || native == nullptr || window == nullptr) {
        return "";
    }
    auto* const display = static_cast<wl_display*>(native->nativeResourceForIntegration("wl_display"));
    auto* const seat = static_cast<wl_seat*>(native->nativeResourceForIntegration("wl_seat"));
    auto* const surface = static_cast<wl_surface*>(native->nativeResourceForWindow("surface", window));
    if (display == nullptr || seat == nullptr || surface == nullptr) {
        return "";
    }
    const auto serial = reinterpret_cast<std::uintptr_t>(native->nativeResourceForIntegration("serial"));
    return Wayland::activationToken(
        {.display = *display,
         .seat = *seat,
         .surface = *surface,
         .serial = static_cast<std::uint32_t>(serial)});
}

} // namespace

void startBeside(const QString& program, const QStringList& arguments, DesktopOpened ended) {
    // Without a parent, whose end would kill the process. It deletes itself.
    auto* const opener = new QProcess; // NOLINT(cppcoreguidelines-owning-memory)
    opener->setStandardInputFile(QProcess::nullDevice());
    opener->setStandardOutputFile(QProcess::nullDevice());
    opener->setStandardErrorFile(QProcess::nullDevice());
    opener->setChildProcessModifier(standAlone);
    if (const std::string token = tokenForAnother(); !token.empty()) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_ACTIVATION_TOKEN", QString::fromStdString(token));
        opener->setProcessEnvironment(environment);
    }
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
