#include "app/App/SettingsFileOpener.h"

#include "app/App/ProgramIcon.h"
#include "platform/qt/Foreground.h"

#include <QMessageBox>
#include <QProcess>

#include <csignal>
#include <fstream>
#include <system_error>
#include <unistd.h>

namespace tarnwick {

namespace {

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the window and the process delete themselves

void say(const QString& text) {
    auto* const box =
        new QMessageBox(QMessageBox::Information, "Tarnwick Settings", text, QMessageBox::Close);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setAttribute(Qt::WA_QuitOnClose, false);
    box->setWindowIcon(programIcon());
    box->setTextFormat(Qt::PlainText);
    box->setModal(false);
    Foreground::show(*box);
}

[[nodiscard]] bool makeSureThatItExists(const std::filesystem::path& path) {
    std::error_code error;
    if (std::filesystem::exists(path, error)) {
        return true;
    }
    std::filesystem::create_directories(path.parent_path(), error);
    std::ofstream file(path);
    file << "{}\n";
    file.close();
    return file.good();
}

/// The opener may become the editor, which outlives this program and knows nothing of its terminal and
/// signals.
void standAlone() {
    setsid();
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

void open(const QString& name) {
    // Without a parent: a process is killed with the object that stands for it.
    auto* const opener = new QProcess;
    opener->setProcessChannelMode(QProcess::ForwardedChannels);
    opener->setStandardInputFile(QProcess::nullDevice());
    opener->setChildProcessModifier(standAlone);
    const auto ended = [opener, name](bool isOpened) {
        if (!isOpened) {
            say("Nothing here opens the settings. They are in " + name
                + " and are read when Tarnwick starts.");
        }
        opener->deleteLater();
    };
    QObject::connect(opener, &QProcess::finished, opener, [ended](int code, QProcess::ExitStatus status) {
        // One that a signal has ended had something open.
        ended(code == 0 || status == QProcess::CrashExit);
    });
    QObject::connect(opener, &QProcess::errorOccurred, opener, [ended](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            ended(false);
        }
    });
    opener->start("xdg-open", {name});
}

// NOLINTEND(cppcoreguidelines-owning-memory)

} // namespace

void openSettingsFile(const std::filesystem::path& path) {
    const QString name = QString::fromStdString(path.string());
    if (makeSureThatItExists(path)) {
        open(name);
    } else {
        say("The settings belong in " + name + ", where no file can be made.");
    }
}

} // namespace tarnwick
