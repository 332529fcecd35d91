// The options of both programs.
#pragma once

#include "app/CommandLine/ArgumentParser.h"
#include "app/CommandLine/SettingArgument.h"

#include <optional>

namespace tarnwick {

struct CommonOptions {
    /// Values for the parser. A program's own options start at `firstOwn`.
    enum Letter : int { setLetter = ArgumentParser::firstOption, helpLetter, versionLetter, firstOwn };

    static constexpr option setOption{"set", required_argument, nullptr, setLetter};
    static constexpr option helpOption{"help", no_argument, nullptr, helpLetter};
    static constexpr option versionOption{"version", no_argument, nullptr, versionLetter};

    bool help = false;
    bool version = false;
    UserDefaults::Table settings; ///< for this run only; of a key given twice the last value

    /// Applies what the parser has found, unless it is one of the program's own options. Returns an error.
    [[nodiscard]] std::optional<UsageError> apply(int letter, const ArgumentParser& parser);
};

} // namespace tarnwick
