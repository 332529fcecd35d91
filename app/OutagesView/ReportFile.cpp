#include "app/OutagesView/ReportFile.h"

#include "app/OutagesView/Model/OutagesExport.h"

#include <QSaveFile>

namespace tarnwick::ReportFile {

QStringList filters() {
    QStringList all;
    for (const ExportFormat format : allExportFormats) {
        all += QString::fromStdString(
            std::string(nameOf(format)) + " (*." + std::string(endingOf(format)) + ")");
    }
    return all;
}

QString write(const QString& path, const std::string& text) {
    QSaveFile file(path);
    file.setDirectWriteFallback(true); // in a folder in which no other file can be made
    if (!file.open(QIODevice::WriteOnly)) {
        return file.errorString();
    }
    file.write(text.data(), static_cast<qint64>(text.size()));
    return file.commit() ? QString() : file.errorString();
}

} // namespace tarnwick::ReportFile
