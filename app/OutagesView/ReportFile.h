// Where a report is written to, and how.
#pragma once

#include <QString>
#include <QStringList>

#include <string>

namespace tarnwick::ReportFile {

/// What a dialog offers, the first one first: "Text (*.txt)".
[[nodiscard]] QStringList filters();

/// Puts the text in the place of the file. Returns why that failed, in the system's words; empty: it is
/// there.
[[nodiscard]] QString write(const QString& path, const std::string& text);

} // namespace tarnwick::ReportFile
