#include "app/App/SettingsFileOpener.h"

#include "app/App/ProgramIcon.h"
#include "platform/qt/DesktopOpener.h"
#include "platform/qt/Foreground.h"

#include <QMessageBox>

#include <fstream>
#include <system_error>

namespace tarnwick {

namespace {

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the window deletes itself

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

void open(const QString& name) {
    openWithDesktop(name, [name](bool isOpened) {
        if (!isOpened) {
            say("Nothing here opens the settings. They are in " + name
                + " and are read when Tarnwick starts.");
        }
    });
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
