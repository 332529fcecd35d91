// A setting as it lies in the user's file.
#pragma once

#include "platform/ports/UserDefaults.h"

#include <optional>
#include <string>

namespace tarnwick {

struct StoredSetting {
    std::string key;
    std::optional<UserDefaults::Value> value; ///< none: of a type that no setting has
    std::string written;                      ///< the value in the file's own notation
    int line = 0;                             ///< of the key, from 1; 0: not known
    bool isRepeated = false;                  ///< the file has the key more than once; this is the last
};

} // namespace tarnwick
