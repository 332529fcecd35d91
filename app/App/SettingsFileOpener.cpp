#include "app/App/SettingsFileOpener.h"

#include <QDesktopServices>
#include <QMessageBox>
#include <QUrl>

#include <fstream>
#include <system_error>

namespace tarnwick {

void openSettingsFile(const std::filesystem::path& path) {
    std::error_code ignored; // what can't be made can't be opened either, which is said below
    std::filesystem::create_directories(path.parent_path(), ignored);
    if (!std::filesystem::exists(path, ignored)) {
        std::ofstream(path) << "{}\n";
    }
    const QString name = QString::fromStdString(path.string());
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(name))) {
        auto* const box = new QMessageBox(
            QMessageBox::Information, "Tarnwick Settings",
            "The settings are in " + name + ". They are read when Tarnwick starts.", QMessageBox::Close);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->open();
    }
}

} // namespace tarnwick
