// Starts other programs for the user: a given one, or the desktop's program for a file or a page.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace tarnwick {

/// Called once, perhaps much later, with whether it worked.
using DesktopOpened = std::function<void(bool)>;

/// The started program outlives this one, and shares neither its terminal nor its signals. Main thread.
void startBeside(const QString& program, const QStringList& arguments, DesktopOpened ended = {});

void openWithDesktop(const QString& fileOrPage, DesktopOpened ended = {});

} // namespace tarnwick
