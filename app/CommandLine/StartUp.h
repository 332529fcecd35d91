// What both programs do before their own work.
#pragma once

#include "app/CommandLine/CommonOptions.h"

#include <optional>
#include <string>
#include <variant>

namespace tarnwick {

/// The first call of `main`. Opens the standard descriptors that are closed: otherwise the next file to be
/// opened would take the number, and receive the program's output. Ignores the signals by which a reader that
/// has gone and a file that may not grow would end the program: the write reports them as errors.
void startUp();

struct Program {
    std::string name;
    std::string version;
};

/// Writes a usage error. Returns the exit status.
[[nodiscard]] int refuse(const Program& program, const UsageError& error);

/// Writes the help or the version. Returns the exit status; nothing when neither is asked for.
[[nodiscard]] std::optional<int> explain(
    const Program& program, const CommonOptions& options, std::string (*usage)());

/// Answers a command line for which the program need not run. Returns the exit status; nothing when the
/// program is to run.
template<class Options>
[[nodiscard]] std::optional<int> answerWithoutRunning(
    const Program& program, const std::variant<Options, UsageError>& commandLine) {
    if (const auto* error = std::get_if<UsageError>(&commandLine)) {
        return refuse(program, *error);
    }
    return explain(program, std::get<Options>(commandLine), Options::usage);
}

} // namespace tarnwick
