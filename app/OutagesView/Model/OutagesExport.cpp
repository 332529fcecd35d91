#include "app/OutagesView/Model/OutagesExport.h"

#include "app/Report/ReportCsv.h"
#include "app/Report/ReportText.h"

#include <algorithm>
#include <cctype>

namespace tarnwick {

namespace {

/// "csv" of "a.CSV".
std::string endOfName(std::string_view fileName) {
    const std::size_t dot = fileName.rfind('.');
    std::string end(dot == std::string_view::npos ? std::string_view() : fileName.substr(dot + 1));
    std::ranges::transform(end, end.begin(), [](unsigned char each) { return std::tolower(each); });
    return end;
}

} // namespace

std::string_view nameOf(ExportFormat format) {
    switch (format) {
    case ExportFormat::html:
        return "Page to print or to send";
    case ExportFormat::csv:
        return "Outages for spreadsheets";
    case ExportFormat::text:
        break;
    }
    return "Text";
}

std::string_view endingOf(ExportFormat format) {
    switch (format) {
    case ExportFormat::html:
        return "html";
    case ExportFormat::csv:
        return "csv";
    case ExportFormat::text:
        break;
    }
    return "txt";
}

ExportFormat exportFormatOf(std::string_view fileName) {
    const std::string end = endOfName(fileName);
    const auto* const found =
        std::ranges::find(allExportFormats, end, [](ExportFormat format) { return endingOf(format); });
    return found != allExportFormats.end() ? *found : ExportFormat::text;
}

std::string exported(
    const Report& report, ExportFormat format, const ReportOrigin& origin, const UtcOffset& offset) {
    switch (format) {
    case ExportFormat::html:
        return reportHtml(report, origin, offset);
    case ExportFormat::csv:
        return reportCsv(report, offset);
    case ExportFormat::text:
        break;
    }
    return reportText(report, offset);
}

} // namespace tarnwick
