// The command line of the terminal program's report: "tarnwick-watch report ...".
#pragma once

#include "app/CommandLine/CommonOptions.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

struct ReportOptions : CommonOptions {
    enum class Format { text, csv, json, html };

    /// The first argument that asks for a report.
    static constexpr const char* command = "report";

    std::string since = "7d"; ///< as it was given
    std::string until = "0m"; ///< likewise
    std::optional<std::string> host;
    Format format = Format::text;

    [[nodiscard]] static const ProgramTable& table();
};

/// `arguments` without the program's name and `command`.
[[nodiscard]] std::variant<ReportOptions, UsageError> parseReportOptions(
    const std::vector<std::string>& arguments);

/// Why a time that was given can't be meant.
[[nodiscard]] UsageError wrongTime(const std::string& option, const std::string& text);

} // namespace tarnwick
