// Starts other programs for the user.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace tarnwick {

/// Called once, perhaps much later, with whether it worked.
using DesktopOpened = std::function<void(bool)>;

/// The started program outlives this one, and shares neither its terminal nor its signals. Main thread.
void startBeside(const QString& program, const QStringList& arguments, DesktopOpened ended = {});

} // namespace tarnwick
