#include "app/App/Options.h"

#include "app/CommandLine/ArgumentParser.h"

#include <array>

namespace tarnwick {

namespace {

enum Option : int { set = ArgumentParser::firstOption, help, version };

constexpr std::array<option, 4> knownOptions{{
    {"set", required_argument, nullptr, set},
    {"help", no_argument, nullptr, help},
    {"version", no_argument, nullptr, version},
    {nullptr, 0, nullptr, 0},
}};

std::optional<UsageError> apply(int letter, const ArgumentParser& parser, AppOptions& options) {
    switch (letter) {
    case help:
        options.help = true;
        return std::nullopt;
    case version:
        options.version = true;
        return std::nullopt;
    case set: {
        auto setting = parseSetting(ArgumentParser::value());
        if (auto* error = std::get_if<UsageError>(&setting)) {
            return *error;
        }
        options.settings.push_back(std::get<Setting>(std::move(setting)));
        return std::nullopt;
    }
    case ArgumentParser::missingValue:
        return UsageError{parser.culprit() + " needs a value"};
    default:
        return UsageError{"unknown option " + quoted(parser.culprit())};
    }
}

} // namespace

const char* AppOptions::usage() {
    return "usage: tarnwick [--set KEY=VALUE]...\n"
           "\n"
           "Keeps an eye on the internet connection from the panel. A second start opens what drops\n"
           "down from the one that runs.\n"
           "\n"
           "  --set KEY=VALUE  a setting for this run only; may be repeated\n"
           "  --help           show this text\n"
           "  --version        show the version\n"
           "\n"
           "The settings are those of tarnwick-watch, see its --help.\n";
}

std::variant<AppOptions, UsageError> parseAppOptions(const std::vector<std::string>& arguments) {
    AppOptions options;
    ArgumentParser parser(arguments, knownOptions);
    for (int letter = parser.next(); letter != ArgumentParser::endOfOptions; letter = parser.next()) {
        if (auto error = apply(letter, parser, options)) {
            return std::move(*error);
        }
    }
    if (const std::vector<std::string> rest = parser.rest(); !rest.empty()) {
        return UsageError{"unknown argument " + quoted(rest.front())};
    }
    return options;
}

} // namespace tarnwick
