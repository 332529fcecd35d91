#include "app/CommandLine/AppOptions.h"

#include "app/Preferences/SettingTable.h"
#include "core/PauseLength.h"

#include <array>
#include <cmath>
#include <optional>
#include <utility>

namespace tarnwick {

namespace {

enum AppLetter : int {
    showLetter = CommonOptions::firstOwn,
    settingsLetter,
    outagesLetter,
    pauseLetter,
    quitLetter,
    sessionLetter
};

constexpr std::array<ProgramOption, 9> appOptions{{
    {"show", nullptr, "open the drop-down, of the running instance if there is one", showLetter},
    {"settings", nullptr, "open the settings window, of the running instance if there is one",
     settingsLetter},
    {"outages", nullptr, "open the outages window, of the running instance if there is one", outagesLetter},
    {"pause", "SECONDS", "pause the pings of the running instance; 0 resumes", pauseLetter},
    {"quit", nullptr, "end the running instance", quitLetter},
    {"from-session", nullptr, "for starts with the session: no window opens", sessionLetter},
    CommonOptions::setOption,
    CommonOptions::helpOption,
    CommonOptions::versionOption,
}};
constexpr auto appParserOptions = parserOptions(appOptions);

constexpr std::array<const char*, 3> appSynopsis{
    "[--show | --settings | --outages | --from-session] [--set KEY=VALUE]...", "--pause SECONDS", "--quit"};

constexpr ProgramTable appTable{
    .name = "tarnwick",
    .purpose = "shows the quality of the internet connection in the panel",
    .synopsis = appSynopsis,
    .summary =
        "Shows the quality of the internet connection in the panel. Starting it again opens the drop-down\n"
        "of the running instance; settings for a run are refused then.",
    .operand = {},
    .options = appOptions,
    .ending = "The exit status is 0 at an ordinary end, 1 if it could not run, 2 for a wrong command line.",
};

std::optional<AppOptions::Request> requestOf(int letter) {
    switch (letter) {
    case showLetter:
        return AppOptions::Request::show;
    case settingsLetter:
        return AppOptions::Request::settings;
    case outagesLetter:
        return AppOptions::Request::outages;
    case pauseLetter:
        return AppOptions::Request::pause;
    case quitLetter:
        return AppOptions::Request::quit;
    case sessionLetter:
        return AppOptions::Request::stay;
    default:
        return std::nullopt;
    }
}

std::optional<UsageError> takePause(const std::string& text, AppOptions& options) {
    const std::optional<double> number = numberIn(text);
    // Compared before it is converted: it may be larger than an integer.
    const bool isWhole =
        number && *number >= 0 && *number <= PauseLength::longest && std::trunc(*number) == *number;
    if (!isWhole) {
        return UsageError{
            "--pause takes a whole number of seconds, " + std::to_string(PauseLength::shortest) + " to "
            + std::to_string(PauseLength::longest) + ", or 0 to resume, not " + quoted(text)};
    }
    options.pauseSeconds = static_cast<int>(*number);
    return std::nullopt;
}

std::optional<UsageError> apply(int letter, const ArgumentParser& parser, AppOptions& options) {
    const auto request = requestOf(letter);
    if (!request) {
        return options.apply(letter, parser);
    }
    if (options.request != AppOptions::Request::none && options.request != *request) {
        return UsageError{
            "only one of --show, --settings, --outages, --from-session, --pause and --quit is possible"};
    }
    options.request = *request;
    return letter == pauseLetter ? takePause(ArgumentParser::value(), options) : std::nullopt;
}

} // namespace

const ProgramTable& AppOptions::table() {
    return appTable;
}

std::vector<std::string> AppOptions::forRestart() const {
    std::vector<std::string> arguments{"--from-session"};
    for (const std::string& text : settingTexts) {
        arguments.push_back("--set=" + text);
    }
    return arguments;
}

std::variant<AppOptions, UsageError> parseAppOptions(const std::vector<std::string>& arguments) {
    AppOptions options;
    ArgumentParser parser(arguments, appParserOptions);
    for (int letter = parser.next(); letter != ArgumentParser::endOfOptions; letter = parser.next()) {
        if (auto error = apply(letter, parser, options)) {
            return std::move(*error);
        }
    }
    for (const auto& [request, name] :
         {std::pair(AppOptions::Request::quit, "--quit"), std::pair(AppOptions::Request::pause, "--pause")}) {
        if (options.request == request && !options.settings.empty()) {
            return UsageError{std::string(name) + " takes no --set"};
        }
    }
    if (const std::vector<std::string> rest = parser.rest(); !rest.empty()) {
        return UsageError{"unknown argument " + quoted(rest.front())};
    }
    return options;
}

} // namespace tarnwick
