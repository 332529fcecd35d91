// The outages of a report for spreadsheets.
#include "app/Report/ReportCsv.h"

#include "tests/core/History/SomeHistory.h"

#include <gtest/gtest.h>

namespace tarnwick {
namespace {

const std::string header = "start,end,seconds,verdict,likelihood,evidence,address,interface,pingsLost\r\n";

TEST(ReportCsv, OfNoOutagesHasTheNamesAlone) {
    EXPECT_EQ(reportCsv({}, test::centralEurope), header);
}

TEST(ReportCsv, HasALineForEachOutage) {
    Report report;
    report.outages = {
        {.episode =
             {.start = test::at("2026-01-05 10:00"),
              .end = test::at("2026-01-05 10:07"),
              .verdict =
                  Verdict{
                      .blame = Blame::localNetwork,
                      .likelihood = Likelihood::certain,
                      .evidence = "The router (\"box\"), does not answer."},
              .address = "192.0.2.1",
              .interface = "eth0",
              .pingsLost = 400},
         .length = std::chrono::seconds(420)},
        {.episode = {.start = test::at("2026-01-05 11:00")},
         .length = std::chrono::seconds(5),
         .lasts = true}};

    EXPECT_EQ(
        reportCsv(report, test::centralEurope),
        header
            + "2026-01-05T11:00:00+01:00,2026-01-05T11:07:00+01:00,420,localNetwork,certain,"
              "\"The router (\"\"box\"\"), does not answer.\",192.0.2.1,eth0,400\r\n"
              "2026-01-05T12:00:00+01:00,,5,,,,,,0\r\n");
}

TEST(ReportCsv, TellsTheRepeatedHourApart) {
    Report report;
    report.outages = {
        {.episode = test::outage("2026-10-25 00:30", "2026-10-25 00:31"), .length = std::chrono::seconds(60)},
        {.episode = test::outage("2026-10-25 01:30", "2026-10-25 01:31"),
         .length = std::chrono::seconds(60)}};

    EXPECT_EQ(
        reportCsv(report, test::centralEurope),
        header
            + "2026-10-25T02:30:00+02:00,2026-10-25T02:31:00+02:00,60,,,,,,0\r\n"
              "2026-10-25T02:30:00+01:00,2026-10-25T02:31:00+01:00,60,,,,,,0\r\n");
}

} // namespace
} // namespace tarnwick
