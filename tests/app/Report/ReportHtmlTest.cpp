// A report as a page. Whether it prints on two pages is tried in a browser, by tests/report.
#include "tests/app/Report/SomePage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {
namespace {

using test::aGoodDay;
using test::at;
using test::between;
using test::countOf;
using test::letSleep;
using test::outage;
using test::pageDay;
using test::pageOf;
using testing::HasSubstr;
using testing::Not;
using namespace std::chrono_literals;

TEST(ReportHtml, IsOnePageThatLoadsAndRunsNothing) {
    const std::string page = pageOf(aGoodDay());

    EXPECT_THAT(
        page,
        testing::StartsWith("<!DOCTYPE html>\n<html xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"en\">"));
    EXPECT_THAT(page, testing::EndsWith("</html>\n"));
    EXPECT_THAT(page, HasSubstr("<meta charset=\"utf-8\"/>"));
    EXPECT_THAT(page, HasSubstr("<meta name=\"viewport\" content=\"width=device-width"));
    EXPECT_THAT(page, HasSubstr("<meta name=\"referrer\" content=\"no-referrer\"/>"));
    EXPECT_THAT(
        page, HasSubstr("http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src"));
    EXPECT_EQ(countOf(page, "://"), 1U); // the name of the markup
    EXPECT_THAT(page, Not(HasSubstr("<script")));
    EXPECT_THAT(page, Not(HasSubstr("@import")));
    EXPECT_THAT(page, HasSubstr("<style>\n:root {"));
}

TEST(ReportHtml, TellsHostTimeAndZone) {
    const std::string page = pageOf(aGoodDay());

    EXPECT_THAT(page, HasSubstr("<title>Connection to one.example</title>"));
    EXPECT_THAT(page, HasSubstr("<h1 class=\"short\">Connection to one.example</h1>"));
    EXPECT_THAT(page, HasSubstr("<time datetime=\"2026-01-05T01:00:00+01:00\">2026-01-05 01:00</time> to "));
    EXPECT_THAT(page, HasSubstr("2026-01-06 01:00</time> (1 d), times in UTC+01:00</p>"));
}

TEST(ReportHtml, TellsWhatOfTheTimeIsKnown) {
    const std::string page = pageOf(aGoodDay(), between("2026-01-01 00:00", "2026-02-01 00:00"));

    EXPECT_THAT(page, HasSubstr(">2026-01-05 01:00</time> to <time"));
    EXPECT_THAT(page, Not(HasSubstr("2026-01-01")));
    EXPECT_THAT(page, Not(HasSubstr("2026-02-01")));
}

TEST(ReportHtml, EscapesWhatComesFromOutside) {
    History history = aGoodDay();
    history.episodes = {outage("2026-01-05 10:00", "2026-01-05 10:07")};
    history.episodes[0].address = "<a>&";
    history.episodes[0].interface = "<i>\xff";
    history.episodes[0].verdict = Verdict{.blame = Blame::provider, .evidence = "<e>\"&amp;"};

    const std::string page = pageOf(history, pageDay, "<h>&");

    for (const char* tag : {"<a>", "<i>", "<e>", "<h>"}) {
        EXPECT_THAT(page, Not(HasSubstr(tag)));
    }
    EXPECT_THAT(page, HasSubstr("&lt;a&gt;&amp; over &lt;i&gt;\uFFFD, 0 pings lost"));
    EXPECT_THAT(page, HasSubstr("Provider, possible</strong>: &lt;e&gt;&quot;&amp;amp;</td>"));
    EXPECT_THAT(page, HasSubstr("<title>Connection to &lt;h&gt;&amp;</title>"));
    EXPECT_THAT(page, HasSubstr("<h1 class=\"short\">Connection to &lt;h&gt;&amp;</h1>"));
}

TEST(ReportHtml, OfAGoodDayHasNoOutageAndNoWorstHour) {
    const std::string page = pageOf(aGoodDay());

    EXPECT_THAT(page, HasSubstr("<strong>100%</strong> available"));
    EXPECT_THAT(page, HasSubstr("<dt>Outages</dt><dd>0</dd>"));
    EXPECT_THAT(page, HasSubstr("<dt>Time down</dt><dd>0 s</dd>"));
    EXPECT_THAT(page, HasSubstr("<dt>Loss while up</dt><dd>0.00%</dd>"));
    EXPECT_THAT(page, HasSubstr("<dt>Median latency</dt><dd>20.0 ms</dd>"));
    EXPECT_THAT(page, HasSubstr("<dt>Longest outage</dt><dd>none</dd>"));
    EXPECT_THAT(
        page, HasSubstr("<h2>Outages: 0</h2><p>The connection was never down while it was watched.</p>"));
    EXPECT_THAT(page, Not(HasSubstr("Worst hours")));
    for (const char* kind : {"outage", "loss", "beyond"}) {
        EXPECT_THAT(page, Not(HasSubstr("<rect class=\"" + std::string(kind) + "\" x=")));
    }
}

TEST(ReportHtml, ShowsTimeAsleepAndCountsItNeitherWay) {
    History history = aGoodDay();
    letSleep(history, between("2026-01-05 06:00", "2026-01-05 12:00"));

    const std::string page = pageOf(history);

    EXPECT_THAT(page, HasSubstr("<strong>100%</strong> available"));
    EXPECT_THAT(page, HasSubstr("The share of the time watched (18 h)"));
    EXPECT_THAT(page, HasSubstr("</svg>Up</th><td>18 h</td><td>75.00%</td>"));
    EXPECT_THAT(page, HasSubstr("</svg>Down</th><td>0 s</td><td>0.00%</td>"));
    EXPECT_THAT(page, HasSubstr("</svg>Asleep</th><td>6 h</td><td>25.00%</td>"));
    // In the strip, and over both lanes of the chart.
    EXPECT_THAT(page, HasSubstr("<rect class=\"unwatched\" x=\"540.0\" width=\"180.0\" height=\"18.0\"/>"));
    EXPECT_THAT(
        page,
        HasSubstr("<rect class=\"unwatched\" x=\"216.0\" y=\"10.0\" width=\"168.0\" height=\"236.0\"/>"));
}

TEST(ReportHtml, ListsOutagesWithVerdictsAndTheWay) {
    History history = aGoodDay();
    history.episodes = {outage("2026-01-05 10:00", "2026-01-05 10:07"), {.start = at("2026-01-05 23:59")}};
    history.episodes[0].verdict = Verdict{
        .blame = Blame::beyondProvider, .likelihood = Likelihood::likely, .evidence = "It ends there."};
    history.episodes[0].address = "192.0.2.1";
    history.episodes[0].interface = "eth0";
    history.episodes[0].pingsLost = 400;

    const std::string page = pageOf(history);

    EXPECT_THAT(page, HasSubstr("</svg>Up</th><td>23 h 52 min</td><td>99.44%</td>"));
    EXPECT_THAT(page, HasSubstr("<h2>Outages: 2</h2>"));
    EXPECT_THAT(
        page, HasSubstr("<li><strong>Beyond the provider</strong> 1 outage, 7 min</li>"
                        "<li><strong>Not clear</strong> 1 outage, 1 min</li>"));
    EXPECT_THAT(
        page, HasSubstr("2026-01-05 11:00:00</time></th><td>7 min</td>"
                        "<td class=\"why\"><strong>Beyond the provider, likely</strong>: It ends there.</td>"
                        "<td>192.0.2.1 over eth0, 400 pings lost</td></tr>"));
    EXPECT_THAT(
        page, HasSubstr("2026-01-06 00:59:00</time></th><td>1 min, and it lasts</td>"
                        "<td class=\"why\"><strong>Not clear</strong>: no verdict was reached.</td>"
                        "<td>no address, no interface, 0 pings lost</td></tr>"));
    EXPECT_THAT(page, HasSubstr("<caption>Each outage, in the order of their starts</caption>"));
}

/// From one in each hour, the longest the second one.
History withOutages(int count, const std::optional<Verdict>& verdict = std::nullopt) {
    History history = aGoodDay();
    for (int hour = 0; hour < count; ++hour) {
        const HistoryTime start = pageDay.from + std::chrono::hours(hour);
        const std::chrono::minutes length(hour == 0 ? 1 : 30 - hour);
        history.episodes.push_back({.start = start, .end = start + length, .verdict = verdict});
    }
    return history;
}

TEST(ReportHtml, ListsAllOutagesThatHaveRoom) {
    const std::string page = pageOf(withOutages(11));

    EXPECT_THAT(page, HasSubstr("<caption>Each outage, in the order of their starts</caption>"));
    EXPECT_EQ(countOf(page, "<td class=\"why\">"), 11U);
}

TEST(ReportHtml, OfMoreOutagesListsTheLongestAndCountsTheOthers) {
    const std::string page = pageOf(withOutages(13));

    EXPECT_THAT(
        page, HasSubstr("<caption>The 11 longest of 13 outages, in the order of their starts. "
                        "The report with --format csv has the other 2, too.</caption>"));
    EXPECT_EQ(countOf(page, "<td class=\"why\">"), 11U);
    EXPECT_THAT(page, Not(HasSubstr("<td>1 min</td><td class")));
    EXPECT_THAT(page, Not(HasSubstr("<td>18 min</td><td class")));
    EXPECT_LT(page.find("<td>29 min</td><td class"), page.find("<td>19 min</td><td class"));
}

TEST(ReportHtml, ListsFewerOutagesWithLongTexts) {
    const Verdict verdict{.blame = Blame::host, .evidence = std::string(120, 'x')}; // three lines
    EXPECT_EQ(countOf(pageOf(withOutages(13, verdict)), "<td class=\"why\">"), 7U);

    History history = withOutages(13);
    for (Episode& episode : history.episodes) {
        episode.interface = std::string(60, 'i'); // four lines
    }
    EXPECT_EQ(countOf(pageOf(history), "<td class=\"why\">"), 5U);
}

TEST(ReportHtml, ShortensEvidenceThatIsNoSentence) {
    const Verdict verdict{.blame = Blame::host, .evidence = std::string(161, 'x')};

    EXPECT_THAT(
        pageOf(withOutages(1, verdict)),
        HasSubstr("<strong>The host, possible</strong>: " + std::string(160, 'x') + "…</td>"));
}

TEST(ReportHtml, GivesTheNameOfAVeryLongHostLittleRoom) {
    const std::string page = pageOf(aGoodDay(), pageDay, std::string(41, 'h'));
    EXPECT_THAT(page, HasSubstr("<h1 class=\"long\">Connection to " + std::string(41, 'h') + "</h1>"));
    EXPECT_THAT(pageOf(aGoodDay(), pageDay, std::string(40, 'h')), HasSubstr("<h1 class=\"short\">"));
    EXPECT_THAT(
        pageOf(aGoodDay(), pageDay, std::string(254, 'h')), HasSubstr(std::string(253, 'h') + "…</h1>"));
}

TEST(ReportHtml, NamesWorstHoursAndFigures) {
    History history = aGoodDay();
    history.episodes = {outage("2026-01-05 10:00", "2026-01-05 10:07")};

    const std::string page = pageOf(history);

    EXPECT_THAT(
        page, HasSubstr("2026-01-05 11:00</time></th><td>7 min</td><td>0.0%</td><td>20.0 ms</td></tr>"));
    EXPECT_THAT(page, HasSubstr("<th scope=\"col\">Hour from</th><th scope=\"col\">Down</th>"));
    EXPECT_THAT(page, HasSubstr("<tr><th scope=\"row\">Fastest</th><td>20.0 ms</td></tr>"));
    EXPECT_THAT(page, HasSubstr("<tr><th scope=\"row\">99th percentile</th><td>20.0 ms</td></tr>"));
    EXPECT_THAT(page, HasSubstr("<tr><th scope=\"row\">Jitter</th><td>unknown</td></tr>"));
    EXPECT_THAT(page, HasSubstr("<tr><th scope=\"row\">Pings sent</th><td>17280</td></tr>"));
    EXPECT_THAT(page, HasSubstr("<tr><th scope=\"row\">Loss</th><td>0.00%</td></tr>"));
}

TEST(ReportHtml, ListsTheDaysOfAFortnightAndDrawsMore) {
    History history = aGoodDay();
    history.episodes = {outage("2026-01-05 10:00", "2026-01-05 10:07")};
    const std::string few = pageOf(history);

    EXPECT_THAT(
        few, HasSubstr("<li class=\"shaken\"><time datetime=\"2026-01-05\">Mon 5 Jan</time>"
                       "<strong>99.492%</strong><span>1 outage</span><span>down 7 min</span></li>"));
    EXPECT_THAT(
        few, HasSubstr("<li class=\"good\"><time datetime=\"2026-01-06\">Tue 6 Jan</time>"
                       "<strong>100%</strong><span>no outage</span></li>"));

    history.periods.insert(
        history.periods.begin(), test::goodPeriod(at("2025-12-22 12:00"), PeriodLength::hour));
    const std::string many = pageOf(history, between("2025-12-01 00:00", "2026-02-01 00:00"));

    EXPECT_THAT(many, Not(HasSubstr("<ol")));
    EXPECT_THAT(many, HasSubstr(">Dec 2025</text>"));
    EXPECT_THAT(many, HasSubstr(">Jan 2026</text>"));
    EXPECT_THAT(many, HasSubstr("<title>2025-12-23: not watched</title>"));
    EXPECT_THAT(
        many, HasSubstr("<rect class=\"shaken\" x=\"148.0\" y=\"34.0\" width=\"19.0\" height=\"16.0\">"
                        "<title>2026-01-05: 99.492%, 1 outage</title></rect>"
                        "<text class=\"count\" x=\"157.5\" y=\"46.0\">1</text>"));
}

TEST(ReportHtml, TellsAllThatIsKnownOfADay) {
    History history = aGoodDay();
    letSleep(history, between("2026-01-05 23:00", "2026-01-06 00:00")); // all that would be of the sixth
    history.episodes = {
        outage("2026-01-05 10:00:00", "2026-01-05 10:00:01"), outage("2026-01-05 12:00", "2026-01-05 15:00")};

    EXPECT_THAT(
        pageOf(history),
        HasSubstr("<li class=\"down\"><time datetime=\"2026-01-05\">Mon 5 Jan</time><strong>86.955%</strong>"
                  "<span>2 outages</span><span>down 3 h</span></li>"
                  "<li class=\"unwatched\"><time datetime=\"2026-01-06\">Tue 6 Jan</time>"
                  "<strong>not watched</strong></li>"));
    history.episodes.pop_back();
    EXPECT_THAT(pageOf(history), HasSubstr("<span>1 outage</span><span>down 1 s</span>"));
    history.episodes[0].kind = Episode::Kind::degradation;
    EXPECT_THAT(pageOf(history), HasSubstr("<li class=\"degraded\"><time datetime=\"2026-01-05\">"));
}

std::string pageOfDays(int count) {
    const Span span{.from = at("2025-12-31 23:00"), .to = at("2025-12-31 23:00") + std::chrono::days(count)};
    History history{.until = span.to};
    history.periods = {test::goodPeriod(span.from, PeriodLength::hour)};
    history.episodes = {{.start = span.from, .end = span.from + 1s}};
    return pageOf(history, span);
}

TEST(ReportHtml, ListsFourteenDaysAndDrawsFifteen) {
    EXPECT_EQ(countOf(pageOfDays(14), "<time datetime=\"2026-01-14\">"), 1U);
    EXPECT_THAT(pageOfDays(15), Not(HasSubstr("<ol")));
    EXPECT_THAT(pageOfDays(15), HasSubstr("viewBox=\"0 0 720 34\""));
}

TEST(ReportHtml, DrawsManyMonthsLow) {
    const std::string few = pageOfDays(8 * 28 - 1);
    EXPECT_THAT(
        few, HasSubstr("<rect class=\"shaken\" x=\"64.0\" y=\"16.0\" width=\"19.0\" height=\"16.0\">"));
    EXPECT_THAT(few, HasSubstr("<text class=\"count\" x=\"73.5\" y=\"28.0\">1</text>"));
    EXPECT_THAT(few, HasSubstr("<text class=\"number\" x=\"73.5\" y=\"11.0\">1</text>"));
    EXPECT_THAT(few, HasSubstr("<text class=\"month\" x=\"0.0\" y=\"46.0\">Feb 2026</text>"));

    const std::string many = pageOfDays(728); // 26 rows at most
    EXPECT_THAT(
        many, HasSubstr("<rect class=\"shaken\" x=\"64.0\" y=\"16.0\" width=\"19.0\" height=\"4.0\">"));
    EXPECT_THAT(many, Not(HasSubstr("class=\"count\"")));
    EXPECT_THAT(many, HasSubstr("<text class=\"month\" x=\"0.0\" y=\"22.0\">Jan 2026</text>"));
    EXPECT_THAT(many, Not(HasSubstr(">Feb 2026</text>")));
    EXPECT_THAT(many, HasSubstr(">Mar 2026</text>"));
}

TEST(ReportHtml, CountsHundredsOfOutagesOfADayAsMany) {
    const auto pageOfOutages = [](int count) {
        History history{.until = pageDay.to};
        history.periods = test::goodPeriods(pageDay, PeriodLength::hour);
        history.periods.insert(
            history.periods.begin(), test::goodPeriod(at("2025-12-01 12:00"), PeriodLength::hour));
        for (int number = 0; number < count; ++number) {
            const HistoryTime start = pageDay.from + std::chrono::minutes(5 * number);
            history.episodes.push_back({.start = start, .end = start + 1s});
        }
        return pageOf(history, between("2025-12-01 00:00", "2026-01-06 00:00"));
    };

    EXPECT_THAT(pageOfOutages(99), HasSubstr(">99</text>"));
    EXPECT_THAT(pageOfOutages(100), HasSubstr(">99+</text>"));
}

TEST(ReportHtml, ShowsNoShareOfTheTimeAsNothingThatIsSomething) {
    History history = aGoodDay();
    history.episodes = {outage("2026-01-05 10:00:00", "2026-01-05 10:00:08")};
    EXPECT_THAT(pageOf(history), HasSubstr("</svg>Down</th><td>8 s</td><td>below 0.01%</td>"));

    history.episodes = {outage("2026-01-05 10:00:00", "2026-01-05 10:00:09")};
    EXPECT_THAT(pageOf(history), HasSubstr("</svg>Down</th><td>9 s</td><td>0.01%</td>"));
    // In the strip it is as wide as can be seen.
    history.episodes = {outage("2026-01-05 10:00:00", "2026-01-05 10:00:01")};
    EXPECT_THAT(
        pageOf(history), HasSubstr("<rect class=\"down\" x=\"718.0\" width=\"2.0\" height=\"18.0\"/>"));
}

TEST(ReportHtml, TellsHowItWasMeasured) {
    const std::string page = pageOf(aGoodDay());

    EXPECT_THAT(page, HasSubstr("one every 5.0 s on average"));
    for (const char* subject : {"Pings", "Outage", "Whose fault", "Availability", "Made"}) {
        EXPECT_THAT(page, HasSubstr("<dt>" + std::string(subject) + "</dt><dd>"));
    }
    EXPECT_THAT(page, HasSubstr("By Tarnwick 1.2.3 on 2026-01-06 13:00 UTC+01:00"));
}

TEST(ReportHtml, OfNothingSaysSoAndHowItWouldBeMeasured) {
    const std::string page = pageOf({});

    EXPECT_THAT(page, HasSubstr("<p>Nothing is known of one.example in this time.</p>"));
    EXPECT_THAT(page, HasSubstr("2026-01-05 01:00</time> to "));
    EXPECT_THAT(page, HasSubstr("at a steady interval"));
    EXPECT_THAT(page, Not(HasSubstr("Outages")));
}

TEST(ReportHtml, TellsTheRepeatedHourApart) {
    const Span night = between("2026-10-24 22:00", "2026-10-25 23:00"); // 25 hours
    History history{.until = night.to};
    history.periods = test::goodPeriods(night, PeriodLength::quarterHour);
    history.episodes = {
        outage("2026-10-25 00:30", "2026-10-25 00:31"), outage("2026-10-25 01:30", "2026-10-25 01:32")};

    const std::string page = pageOf(history, night);

    EXPECT_THAT(page, HasSubstr("(1 d 1 h), times in UTC+02:00, from 2026-10-25 on UTC+01:00"));
    EXPECT_THAT(
        page, HasSubstr("<time datetime=\"2026-10-25T02:30:00+02:00\">2026-10-25 02:30:00 UTC+02:00</time>"));
    EXPECT_THAT(
        page, HasSubstr("<time datetime=\"2026-10-25T02:30:00+01:00\">2026-10-25 02:30:00 UTC+01:00</time>"));
    // The worst hours: both that begin at two.
    EXPECT_THAT(page, HasSubstr(">2026-10-25 02:00 UTC+01:00</time></th><td>2 min</td>"));
    EXPECT_THAT(page, HasSubstr(">2026-10-25 02:00 UTC+02:00</time></th><td>1 min</td>"));
    EXPECT_EQ(countOf(page, "<li class=\"shaken\"><time"), 1U);
}

} // namespace
} // namespace tarnwick
