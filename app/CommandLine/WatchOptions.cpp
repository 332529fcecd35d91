#include "app/CommandLine/WatchOptions.h"

#include "app/CommandLine/ReportOptions.h"
#include "app/Preferences/SettingTable.h"
#include "core/HostText.h"

#include <array>

namespace tarnwick {

namespace {

enum Option : int { json = CommonOptions::firstOwn, forSeconds };

constexpr std::array<ProgramOption, 5> watchOptions{{
    {"json", nullptr, "print one JSON object a line, at once and then every second", json},
    {"for", "SECONDS", "stop after this time", forSeconds},
    CommonOptions::setOption,
    CommonOptions::helpOption,
    CommonOptions::versionOption,
}};
constexpr auto watchParserOptions = parserOptions(watchOptions);

constexpr std::array<const char*, 2> watchSynopsis{
    "[--json] [--for SECONDS] [--set KEY=VALUE]... [HOST]",
    "report [--since TIME] [--until TIME] [--host HOST] [--format FORMAT]"};

constexpr ProgramTable watchTable{
    .name = "tarnwick-watch",
    .purpose = "watches the quality of the internet connection in a terminal",
    .synopsis = watchSynopsis,
    .summary = "Watches the quality of the internet connection by pinging one host.",
    .operand = {.name = "HOST", .meaning = "host name or address to ping, for this run only"},
    .options = watchOptions,
    .ending = "In a terminal it draws a screen: q or Ctrl-C ends it, p pauses. Elsewhere it prints one line "
              "a second.\n"
              "The exit status is 0 after that, 1 if it could not run or write its output, 2 for a wrong "
              "command line.",
    .command = {.word = ReportOptions::command, .table = ReportOptions::table},
};

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

const ProgramTable& WatchOptions::table() {
    return watchTable;
}

std::variant<WatchOptions, UsageError> parseWatchOptions(const std::vector<std::string>& arguments) {
    WatchOptions options;
    ArgumentParser parser(arguments, watchParserOptions);
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
