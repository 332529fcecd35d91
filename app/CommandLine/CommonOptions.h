// The options of both programs.
#pragma once

#include "app/CommandLine/ArgumentParser.h"
#include "app/CommandLine/ProgramTable.h"
#include "app/CommandLine/SettingArgument.h"

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

struct CommonOptions {
    /// Values for the parser. A program's own options start at `firstOwn`.
    enum Letter : int { setLetter = ArgumentParser::firstOption, helpLetter, versionLetter, firstOwn };

    static constexpr ProgramOption setOption{
        "set", "KEY=VALUE", "a setting for this run only; may be repeated", setLetter};
    static constexpr ProgramOption helpOption{
        "help", nullptr, "show this text", helpLetter, ArgumentParser::shortHelp};
    static constexpr ProgramOption versionOption{"version", nullptr, "show the version", versionLetter};

    bool help = false;
    bool version = false;
    UserDefaults::Table settings;          ///< for this run only; of a key given twice the last value
    std::vector<std::string> settingTexts; ///< the same as they were given: "KEY=VALUE"

    /// Applies what the parser has found, unless it is one of the program's own options. Returns an error.
    [[nodiscard]] std::optional<UsageError> apply(int letter, const ArgumentParser& parser);
};

} // namespace tarnwick
