// Whether there is a display to connect to. The toolkit aborts the process where there is none.
#pragma once

#include <optional>
#include <string>

namespace tarnwick::DisplayCheck {

/// What is wrong with the display that the environment names; nothing where one answers, and where the
/// environment names the toolkit's platform. Waits for the answer.
[[nodiscard]] std::optional<std::string> problem();

} // namespace tarnwick::DisplayCheck
