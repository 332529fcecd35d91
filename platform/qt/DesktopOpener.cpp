#include "platform/qt/DesktopOpener.h"

#include <QProcess>

#include <csignal>
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

} // namespace

void startBeside(const QString& program, const QStringList& arguments, DesktopOpened ended) {
    // Without a parent, whose end would kill the process. It deletes itself.
    auto* const opener = new QProcess; // NOLINT(cppcoreguidelines-owning-memory)
    opener->setStandardInputFile(QProcess::nullDevice());
    opener->setStandardOutputFile(QProcess::nullDevice());
    opener->setStandardErrorFile(QProcess::nullDevice());
    opener->setChildProcessModifier(standAlone);
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
