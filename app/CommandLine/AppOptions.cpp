#include "app/CommandLine/AppOptions.h"

#include <array>
#include <optional>

namespace tarnwick {

namespace {

enum AppLetter : int { showLetter = CommonOptions::firstOwn, settingsLetter, quitLetter, sessionLetter };

constexpr std::array<option, 8> appOptions{{
    {"show", no_argument, nullptr, showLetter},
    {"settings", no_argument, nullptr, settingsLetter},
    {"quit", no_argument, nullptr, quitLetter},
    {"from-session", no_argument, nullptr, sessionLetter},
    CommonOptions::setOption,
    CommonOptions::helpOption,
    CommonOptions::versionOption,
    {nullptr, 0, nullptr, 0},
}};

std::optional<AppOptions::Request> requestOf(int letter) {
    switch (letter) {
    case showLetter:
        return AppOptions::Request::show;
    case settingsLetter:
        return AppOptions::Request::settings;
    case quitLetter:
        return AppOptions::Request::quit;
    case sessionLetter:
        return AppOptions::Request::stay;
    default:
        return std::nullopt;
    }
}

std::optional<UsageError> apply(int letter, const ArgumentParser& parser, AppOptions& options) {
    const auto request = requestOf(letter);
    if (!request) {
        return options.apply(letter, parser);
    }
    if (options.request != AppOptions::Request::none && options.request != *request) {
        return UsageError{"only one of --show, --settings, --from-session and --quit is possible"};
    }
    options.request = *request;
    return std::nullopt;
}

} // namespace

std::string AppOptions::usage() {
    return "usage: tarnwick [--show | --settings | --from-session] [--set KEY=VALUE]...\n"
           "       tarnwick --quit\n"
           "\n"
           "Shows the quality of the internet connection in the panel. Starting it again opens the "
           "drop-down\n"
           "of the running instance; settings for a run are refused then.\n"
           "\n"
           "  --show           open the drop-down, of the running instance if there is one\n"
           "  --settings       open the settings window, of the running instance if there is one\n"
           "  --quit           end the running instance\n"
           "  --from-session   for starts with the session: no window opens\n"
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
        if (auto error = apply(letter, parser, options)) {
            return std::move(*error);
        }
    }
    if (options.request == AppOptions::Request::quit && !options.settings.empty()) {
        return UsageError{"--quit takes no --set"};
    }
    if (const std::vector<std::string> rest = parser.rest(); !rest.empty()) {
        return UsageError{"unknown argument " + quoted(rest.front())};
    }
    return options;
}

} // namespace tarnwick
