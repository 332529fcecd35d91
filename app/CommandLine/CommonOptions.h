// The options that both programs have.
#pragma once

#include "app/CommandLine/ArgumentParser.h"
#include "app/CommandLine/SettingArgument.h"

#include <optional>
#include <vector>

namespace tarnwick {

struct CommonOptions {
    /// Their values for the parser; a program's own options follow.
    enum Letter : int { setLetter = ArgumentParser::firstOption, helpLetter, versionLetter, firstOwn };

    static constexpr option setOption{"set", required_argument, nullptr, setLetter};
    static constexpr option helpOption{"help", no_argument, nullptr, helpLetter};
    static constexpr option versionOption{"version", no_argument, nullptr, versionLetter};

    bool help = false;
    bool version = false;
    /// For this run only, in the order given.
    std::vector<Setting> settings;

    /// What the parser has found, where it is none of the program's own options; what is wrong with it, if
    /// anything is.
    [[nodiscard]] std::optional<UsageError> apply(int letter, const ArgumentParser& parser);
};

} // namespace tarnwick
