#include "app/CommandLine/ReportOptions.h"

#include "core/HostText.h"

#include <array>
#include <utility>

namespace tarnwick {

namespace {

enum ReportOption : int { sinceLetter = CommonOptions::firstOwn, untilLetter, hostLetter, formatLetter };

constexpr std::array<ProgramOption, 6> reportOptions{{
    {"since", "TIME", "where the report begins; without it, 7d", sinceLetter},
    {"until", "TIME", "where it ends; without it, now", untilLetter},
    {"host", "HOST", "host that was pinged; without it, the one in the settings", hostLetter},
    {"format", "FORMAT", "text, html to print or send, json, or csv for the outages alone", formatLetter, 0,
     "text csv json html"},
    CommonOptions::helpOption,
    CommonOptions::versionOption,
}};
constexpr auto reportParserOptions = parserOptions(reportOptions);

constexpr std::array<const char*, 1> reportSynopsis{
    "[--since TIME] [--until TIME] [--host HOST] [--format FORMAT]"};

constexpr ProgramTable reportTable{
    .name = "tarnwick-watch report",
    .purpose = "tells how the internet connection was",
    .synopsis = reportSynopsis,
    .summary = "Tells how the internet connection was: availability, outages, latency and loss.",
    .operand = {},
    .options = reportOptions,
    .ending = "TIME is how long ago (30m, 12h, 7d, 4w), a day (2026-11-23), or a moment of it "
              "(2026-11-23T14:05).\n"
              "The exit status is 0, 1 if the output can't be written, 2 for a wrong "
              "command line.",
};

std::optional<UsageError> takeHost(const std::string& text, ReportOptions& options) {
    auto found = hostIn(text);
    if (const auto* const mistake = std::get_if<HostMistake>(&found)) {
        return UsageError{
            "--host takes a host name or address, not " + quoted(text) + ": "
            + std::string(reason(*mistake))};
    }
    options.host = std::get<std::string>(std::move(found));
    return std::nullopt;
}

std::optional<UsageError> takeFormat(const std::string& text, ReportOptions& options) {
    using Format = ReportOptions::Format;
    for (const auto& [name, format] :
         {std::pair("text", Format::text), std::pair("csv", Format::csv), std::pair("json", Format::json),
          std::pair("html", Format::html)}) {
        if (text == name) {
            options.format = format;
            return std::nullopt;
        }
    }
    return UsageError{"--format takes text, csv, json or html, not " + quoted(text)};
}

std::optional<UsageError> applyReport(int letter, const ArgumentParser& parser, ReportOptions& options) {
    switch (letter) {
    case sinceLetter:
        options.since = ArgumentParser::value();
        return std::nullopt;
    case untilLetter:
        options.until = ArgumentParser::value();
        return std::nullopt;
    case hostLetter:
        return takeHost(ArgumentParser::value(), options);
    case formatLetter:
        return takeFormat(ArgumentParser::value(), options);
    default:
        return options.apply(letter, parser);
    }
}

} // namespace

const ProgramTable& ReportOptions::table() {
    return reportTable;
}

std::variant<ReportOptions, UsageError> parseReportOptions(const std::vector<std::string>& arguments) {
    ReportOptions options;
    ArgumentParser parser(arguments, reportParserOptions);
    for (int letter = parser.next(); letter != ArgumentParser::endOfOptions; letter = parser.next()) {
        if (auto error = applyReport(letter, parser, options)) {
            return std::move(*error);
        }
    }
    if (const std::vector<std::string> rest = parser.rest(); !rest.empty()) {
        return UsageError{"a report takes no " + quoted(rest[0])};
    }
    return options;
}

UsageError wrongTime(const std::string& option, const std::string& text) {
    return {
        option + " takes a time as 30m, 12h, 7d, 4w, 2026-11-23 or 2026-11-23T14:05, not " + quoted(text)};
}

} // namespace tarnwick
