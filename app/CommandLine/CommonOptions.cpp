#include "app/CommandLine/CommonOptions.h"

#include <utility>
#include <variant>

namespace tarnwick {

std::optional<UsageError> CommonOptions::apply(int letter, const ArgumentParser& parser) {
    switch (letter) {
    case helpLetter:
    case ArgumentParser::shortHelp:
        help = true;
        return std::nullopt;
    case versionLetter:
        version = true;
        return std::nullopt;
    case setLetter: {
        auto setting = parseSetting(ArgumentParser::value());
        if (auto* error = std::get_if<UsageError>(&setting)) {
            return std::move(*error);
        }
        auto& [key, value] = std::get<Setting>(setting);
        settings.insert_or_assign(std::move(key), std::move(value));
        settingTexts.push_back(ArgumentParser::value());
        return std::nullopt;
    }
    case ArgumentParser::missingValue:
        return UsageError{parser.culprit() + " needs a value"};
    case ArgumentParser::unwantedValue:
        return UsageError{parser.culprit() + " takes no value"};
    default:
        return UsageError{"unknown option " + quoted(parser.culprit())};
    }
}

} // namespace tarnwick
