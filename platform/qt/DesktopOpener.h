// Starting other programs for the user: any, or what the desktop opens a file or a page with.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace tarnwick {

/// Called once, perhaps much later, with whether it went well.
using DesktopOpened = std::function<void(bool)>;

/// What is started outlives this program and knows nothing of its terminal and signals. Main thread.
void startBeside(const QString& program, const QStringList& arguments, DesktopOpened ended = {});

void openWithDesktop(const QString& fileOrPage, DesktopOpened ended = {});

} // namespace tarnwick
