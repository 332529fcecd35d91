// The command line of the desktop program.
#pragma once

#include "app/CommandLine/CommonOptions.h"

#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

struct AppOptions : CommonOptions {
    enum class Request {
        none,     ///< a person has started it; a running instance opens its drop-down
        show,     ///< to open the drop-down
        settings, ///< to open the settings window
        outages,  ///< to open the outages window
        pause,    ///< to have the running instance pause or resume
        quit,     ///< to end the running instance
        stay,     ///< the session has started it: to be there and open nothing
    };

    Request request = Request::none;
    int pauseSeconds = 0; ///< of a request to pause; 0 resumes

    [[nodiscard]] static const ProgramTable& table();

    /// The arguments of a start that goes on with the same settings and opens nothing.
    [[nodiscard]] std::vector<std::string> forRestart() const;
};

/// `arguments` without the program's name.
[[nodiscard]] std::variant<AppOptions, UsageError> parseAppOptions(const std::vector<std::string>& arguments);

} // namespace tarnwick
