#include "app/CommandLine/AppOptions.h"

#include <array>

namespace tarnwick {

namespace {

constexpr std::array<option, 4> appOptions{{
    CommonOptions::setOption,
    CommonOptions::helpOption,
    CommonOptions::versionOption,
    {nullptr, 0, nullptr, 0},
}};

} // namespace

std::string AppOptions::usage() {
    return "usage: tarnwick [--set KEY=VALUE]...\n"
           "\n"
           "Shows the quality of the internet connection in the panel. Starting it again opens the "
           "drop-down\n"
           "of the running instance.\n"
           "\n"
           "  --set KEY=VALUE  a setting for this run only; may be repeated\n"
           "  -h, --help       show this text\n"
           "  --version        show the version\n"
           "\n"
           + settingsUsage()
           + "\n"
             "The exit status is 0 at an ordinary end, 1 if it could not run, 2 for a wrong command line.\n";
}

std::variant<AppOptions, UsageError> parseAppOptions(const std::vector<std::string>& arguments) {
    AppOptions options;
    ArgumentParser parser(arguments, appOptions);
    for (int letter = parser.next(); letter != ArgumentParser::endOfOptions; letter = parser.next()) {
        if (auto error = options.apply(letter, parser)) {
            return std::move(*error);
        }
    }
    if (const std::vector<std::string> rest = parser.rest(); !rest.empty()) {
        return UsageError{"unknown argument " + quoted(rest.front())};
    }
    return options;
}

} // namespace tarnwick
