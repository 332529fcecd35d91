// The pictures of the README.
#pragma once

class QDir;

namespace tarnwick {

/// Overwrites them in this folder. Numbers are grouped as in the United States.
void drawReadmePictures(const QDir& folder);

} // namespace tarnwick
