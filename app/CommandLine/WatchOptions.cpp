#include "app/CommandLine/WatchOptions.h"

#include "app/Preferences/SettingTable.h"
#include "core/HostText.h"

#include <array>

namespace tarnwick {

namespace {

enum Option : int { json = CommonOptions::firstOwn, forSeconds };

constexpr std::array<option, 6> watchOptions{{
    {"json", no_argument, nullptr, json},
    {"for", required_argument, nullptr, forSeconds},
    CommonOptions::setOption,
    CommonOptions::helpOption,
    CommonOptions::versionOption,
    {nullptr, 0, nullptr, 0},
}};

std::optional<UsageError> apply(int letter, const ArgumentParser& parser, WatchOptions& options) {
    switch (letter) {
    case json:
        options.json = true;
        return std::nullopt;
    case forSeconds:
        options.forSeconds = positiveNumber(ArgumentParser::value());
        if (!options.forSeconds) {
            return UsageError{
                "--for takes a number of seconds above 0, not " + quoted(ArgumentParser::value())};
        }
        return std::nullopt;
    default:
        return options.apply(letter, parser);
    }
}

} // namespace

std::string WatchOptions::usage() {
    return "usage: tarnwick-watch [--json] [--for SECONDS] [--set KEY=VALUE]... [HOST]\n"
           "\n"
           "Watches the quality of the internet connection by pinging one host.\n"
           "\n"
           "  HOST             host name or address to ping, for this run only\n"
           "  --json           print one JSON object a line, at once and then every second\n"
           "  --for SECONDS    stop after this time\n"
           "  --set KEY=VALUE  a setting for this run only; may be repeated\n"
           "  -h, --help       show this text\n"
           "  --version        show the version\n"
           "\n"
           + settingsUsage()
           + "\n"
             "In a terminal it draws a screen: q or Ctrl-C ends it. Elsewhere it prints one line a second.\n"
             "The exit status is 0 after that, 1 if it could not run or write its output, 2 for a wrong "
             "command "
             "line.\n";
}

std::variant<WatchOptions, UsageError> parseWatchOptions(const std::vector<std::string>& arguments) {
    WatchOptions options;
    ArgumentParser parser(arguments, watchOptions);
    for (int letter = parser.next(); letter != ArgumentParser::endOfOptions; letter = parser.next()) {
        if (auto error = apply(letter, parser, options)) {
            return std::move(*error);
        }
    }
    const std::vector<std::string> hosts = parser.rest();
    if (hosts.size() > 1) {
        return UsageError{"only one HOST can be watched, not also " + quoted(hosts[1])};
    }
    for (const std::string& host : hosts) {
        auto found = hostIn(host);
        if (const auto* const mistake = std::get_if<HostMistake>(&found)) {
            return UsageError{
                "HOST must be a host name or address, not " + quoted(host) + ": "
                + std::string(reason(*mistake))};
        }
        options.settings.insert_or_assign(PreferenceKey::hostname, std::get<std::string>(std::move(found)));
    }
    return options;
}

} // namespace tarnwick
