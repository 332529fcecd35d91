// Opening a file or a page with what the desktop opens such with.
#pragma once

#include <QString>

#include <functional>

namespace tarnwick {

/// `ended` is told, once and perhaps much later, whether something opened it; it may be empty. What has been
/// opened outlives this program and knows nothing of its terminal and signals. Main thread.
void openWithDesktop(const QString& fileOrPage, std::function<void(bool isOpened)> ended = {});

} // namespace tarnwick
