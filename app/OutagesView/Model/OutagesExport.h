// The report of the outages window's days as a file.
#pragma once

#include "app/Report/ReportHtml.h"

#include <array>
#include <string>
#include <string_view>

namespace tarnwick {

enum class ExportFormat { html, text, csv };

/// The first one is offered first.
inline constexpr std::array allExportFormats{ExportFormat::html, ExportFormat::text, ExportFormat::csv};

/// "Text", and how such a file's name ends: "txt".
[[nodiscard]] std::string_view nameOf(ExportFormat format);
[[nodiscard]] std::string_view endingOf(ExportFormat format);

/// By the end of the file's name; text for every other one.
[[nodiscard]] ExportFormat exportFormatOf(std::string_view fileName);

[[nodiscard]] std::string exported(
    const Report& report, ExportFormat format, const ReportOrigin& origin, const UtcOffset& offset);

} // namespace tarnwick
