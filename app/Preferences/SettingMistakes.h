// Mistakes in the stored settings, told to the user.
#pragma once

#include "platform/ports/StoredSetting.h"

#include <string>
#include <vector>

namespace tarnwick {

/// One text for each mistake, in the order of the lines: "line 3: PingInterval must be ..., not "2";
/// ignored". Values that are taken as they are, and keys of older forms, are no mistakes.
[[nodiscard]] std::vector<std::string> settingMistakes(std::vector<StoredSetting> stored);

} // namespace tarnwick
