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

/// Writes a usage error. Returns the exit status.
[[nodiscard]] int refuse(const ProgramTable& program, const UsageError& error);

/// Writes the help or the version. Returns the exit status; nothing when neither is asked for.
[[nodiscard]] std::optional<int> explain(
    const ProgramTable& program, const CommonOptions& options, const char* version);

/// Answers a command line for which the program need not run. Returns the exit status; nothing when the
/// program is to run.
template<class Options>
[[nodiscard]] std::optional<int> answerWithoutRunning(
    const std::variant<Options, UsageError>& commandLine, const char* version) {
    if (const auto* error = std::get_if<UsageError>(&commandLine)) {
        return refuse(Options::table(), *error);
    }
    return explain(Options::table(), std::get<Options>(commandLine), version);
}

} // namespace tarnwick
