// The report of the outages window as a file.
#include "app/OutagesView/Model/OutagesExport.h"

#include "app/Report/ReportCsv.h"
#include "app/Report/ReportText.h"
#include "tests/core/History/SomeHistory.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

TEST(OutagesExport, TheEndOfTheNameSaysWhatIsWritten) {
    struct Case {
        const char* name;
        ExportFormat format;
    };

    for (const Case& each :
         {Case{"a.html", ExportFormat::html}, Case{"a.txt", ExportFormat::text},
          Case{"a.csv", ExportFormat::csv}, Case{"/home/one.csv/a.CSV", ExportFormat::csv},
          Case{"a.csv.txt", ExportFormat::text}, Case{"csv", ExportFormat::text},
          Case{"a.", ExportFormat::text}, Case{"", ExportFormat::text}}) {
        EXPECT_EQ(exportFormatOf(each.name), each.format) << each.name;
    }
    for (const ExportFormat format : allExportFormats) {
        EXPECT_EQ(exportFormatOf("a." + std::string(endingOf(format))), format) << nameOf(format);
    }
}

TEST(OutagesExport, IsTheReportInThatFormat) {
    const Span span = test::between("2026-01-05 00:00", "2026-01-05 01:00");
    History history{.until = span.to};
    history.periods = test::goodPeriods(span);
    history.episodes = {test::outage("2026-01-05 00:10", "2026-01-05 00:11")};
    const Report report = makeReport(history, "one.example", span, test::centralEurope);

    const ReportOrigin origin{.version = "1.2", .made = span.to};
    const UtcOffset offset = test::centralEurope;

    EXPECT_EQ(exported(report, ExportFormat::html, origin, offset), reportHtml(report, origin, offset));
    EXPECT_EQ(exported(report, ExportFormat::text, origin, offset), reportText(report, offset));
    EXPECT_EQ(exported(report, ExportFormat::csv, origin, offset), reportCsv(report, offset));
}

} // namespace
} // namespace tarnwick
