#include "tests/app/views/Scenes.h"

#include "app/App/OutagesWindow.h"
#include "app/App/ProgramIcon.h"
#include "app/App/SettingsWindow.h"
#include "app/HistoryChartView/HistoryChartView.h"
#include "app/SettingsView/SettingsView.h"
#include "app/StatusItemController/Painting/QtFacePainter.h"
#include "app/StatusItemController/StatusItemController.h"
#include "app/StatusMenuView/DropDown.h"
#include "app/StatusMenuView/DropDownWindow.h"
#include "app/StatusMenuView/MenuItemsView.h"
#include "app/Updater/UpdateWindow.h"
#include "tests/app/StatusItemController/Painting/Ink.h"
#include "tests/app/StatusMenuView/StandardMenu.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <random>

namespace tarnwick::scenes {

StatusFace face(StatusFace::Icon icon, int bars, const std::string& title, const std::string& figure) {
    const QtFacePainter painter;
    StatusFace face{
        .isDown = icon == StatusFace::Icon::failed, .icon = icon, .activeBars = bars, .figure = figure};
    if (!title.empty()) {
        face.title = title;
        face.textSlot = std::max(painter.textWidth(title), painter.textWidth("88ms"));
    }
    return face;
}

QImage painted(const StatusFace& face, StatusItem::Form form, int height, Ink ink) {
    return test::toImage(QtFacePainter().paint(face, form, height, ink));
}

void watchBusily(WatchedMonitor& world) {
    world.prefs.setHostname("one.example");
    world.resolve("one.example", "192.0.2.1");
    auto chance = std::make_shared<std::mt19937>(7);
    const double begin = world.loop.now();
    world.network.setBehavior([chance, begin](const simulation::SentRequest& request) {
        const double share = (request.at - begin - 40'000) / 300;
        const double noise = std::uniform_real_distribution(0.0, 1.0)(*chance);
        if ((share > 0.62 && share < 0.7) || noise < 0.002) {
            return simulation::Answer{.copies = 0};
        }
        if (share > 0.25 && share < 0.42) {
            return simulation::Answer{.delay = 0.05 + 0.13 * std::sin((share - 0.25) / 0.17 * 3.14) * noise};
        }
        return simulation::Answer{
            .delay = share > 0.8 && share < 0.805 ? 0.4 : 0.017 + 0.022 * noise * noise};
    });
    world.watchFor(40'000);
    world.monitor.resetSessionStats();
    world.loop.advance(297);
}

PastSource somePast() {
    const auto read = [](const Span& span) {
        std::mt19937 chance(7); // NOLINT(cert-msc51-cpp): the same every time
        History history{.until = span.to - std::chrono::seconds(20)};
        const auto part = [&](double share) {
            return span.from
                   + std::chrono::seconds(std::llround(share * static_cast<double>(span.length().count())));
        };
        history.gaps = {{.kind = Gap::Kind::asleep, .span = {.from = part(0.35), .to = part(0.6)}}};
        history.episodes = {{.start = part(0.82), .end = part(0.845)}};
        for (HistoryTime start = span.from; start < history.until; start += std::chrono::minutes(1)) {
            const double share = std::chrono::duration<double>(start - span.from) / span.length();
            const bool isBusy = share > 0.15 && share < 0.28;
            const double noise = std::uniform_real_distribution(0.0, 1.0)(chance);
            Period minute{.start = start, .figures = {.sent = 60}};
            minute.figures.addAnswer(18 + 30 * noise * noise + (isBusy ? 110 * noise : 0));
            minute.figures.lost = share > 0.65 && share < 0.72 ? 3 : 0;
            minute.figures.replied = 60 - minute.figures.lost;
            if (gapsIn(history, minute.span()).empty()) {
                history.periods.push_back(minute);
            }
        }
        return history;
    };
    return {
        .read = read,
        .whyEmpty = [] { return "Nothing has been recorded yet."; },
        .offset = [](HistoryTime) { return std::chrono::hours(1); }};
}

QImage grabDropDown(
    WatchedMonitor& world, bool offersChangeHost, int steps, const QString& name, const PastView& past) {
    Menu shown(StatusItemController::menuItems(false));
    shown.setHidden(MenuItem::Id::changeHost, !offersChangeHost);
    DropDown dropDown(
        world.monitor.observedReading(), shown, world.loop, NoticeActions{.allowPinging = [] {}}, somePast());
    const auto begin = std::chrono::steady_clock::now();
    dropDown.open(ScreenPoint{400, 4});
    QApplication::processEvents();
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - begin;
    std::printf("%s: opened in %.1f ms\n", qPrintable(name), taken.count());
    for (int step = 0; step < steps; ++step) {
        dropDown.window()->items().highlightNext(1);
    }
    const auto spans = dropDown.window()->findChildren<QRadioButton*>();
    spans.at(static_cast<qsizetype>(past.reach))->click();
    for (QWidget* const child : dropDown.window()->findChildren<QWidget*>()) {
        if (past.pointsAt && dynamic_cast<HistoryChartView*>(child) != nullptr) {
            const QPointF place(*past.pointsAt * child->width(), 20);
            QMouseEvent move(QEvent::MouseMove, place, place, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
            QApplication::sendEvent(child, &move);
        }
    }
    return dropDown.window()->grab().toImage();
}

void loseProvider(WatchedMonitor& world) {
    watchBusily(world);
    world.fallSilent();
    static_cast<void>(world.waitUntilDown());
    world.loop.advance(6);
}

QImage grabVerdict(WatchedMonitor& world) {
    Reading down = world.monitor.reading();
    down.verdict = Verdict{
        .blame = Blame::provider,
        .likelihood = Likelihood::likely,
        .evidence = "Your router answers in 2 ms; nothing beyond it has answered for 14 s."};
    down.path = {
        {.address = "192.168.1.1", .name = "router.home.arpa", .samples = {{.ms = 2}, {.ms = 2}}},
        {.address = "198.51.100.1", .name = "access.provider.example", .samples = {{}, {}}},
        {.address = "198.51.100.7", .name = "core.provider.example", .samples = {{}, {}}},
        {.address = "203.0.113.1", .samples = {{}}},
        {.address = "192.0.2.1", .name = "one.example", .isHost = true, .samples = {{}}}};
    Observed<Reading> reading;
    reading.set(down);
    Menu shown(StatusItemController::menuItems(false));
    shown.setHidden(MenuItem::Id::changeHost, true);
    DropDown dropDown(reading, shown, world.loop, {}, somePast());
    dropDown.open(ScreenPoint{400, 4});
    for (QPushButton* const button : dropDown.window()->findChildren<QPushButton*>()) {
        if (button->text() == "Show Path") {
            button->click();
        }
    }
    world.loop.runPending();
    QApplication::processEvents();
    return dropDown.window()->grab().toImage();
}

QImage grabSettings(
    WatchedMonitor& world, simulation::FakeLoginItem& loginItem, const QString& clicked,
    SoftwareUpdates* updates) {
    test::StandardMenu menu;
    SettingsModel model(world.monitor, world.notifications, loginItem, updates);
    model.launchAtLogin().showApproval = [] {};
    model.allowPinging = [] {};
    model.networkServers = [] {
        return NetworkServers{
            .routers = {"192.168.1.1", "fe80::1%wlan0"}, .nameServers = {"192.168.1.1", "10.0.0.2"}};
    };
    SettingsWindow window(model, world.loop, menu.menu);
    window.present();
    for (QAbstractButton* button : window.findChildren<QAbstractButton*>()) {
        if (!clicked.isEmpty() && button->accessibleName() == clicked) {
            button->click();
        }
    }
    world.loop.runPending();
    QApplication::processEvents();
    QImage picture = window.view().grab().toImage(); // all of it, however low the screen is
    if (QWidget* const popup = QApplication::activePopupWidget()) {
        const QPoint place = window.view().mapFromGlobal(popup->pos());
        QPainter(&picture).drawPixmap(place, popup->grab());
        popup->close();
    }
    return picture;
}

FoundUpdate someUpdate() {
    FoundUpdate update;
    update.release.version = ReleaseVersion::parse("1.3").value();
    update.release.notes = "### Added\n\n"
                           "- The drop-down tells *whose fault it is*: this computer, the Wi-Fi, the router, "
                           "or what lies beyond.\n"
                           "- `tarnwick-watch report` writes a page for your provider.\n\n"
                           "### Fixed\n\n"
                           "- A name server that answers late is no longer taken for an outage.\n";
    update.archive.size = 18'900'000;
    return update;
}

QImage grabUpdate(const UpdateState& state) {
    UpdateWindow window(programIcon());
    window.setPage(pageOf(state, ReleaseVersion::parse("1.2").value()).value());
    window.show();
    QApplication::processEvents();
    return window.grab().toImage();
}

void changeSomeSettings(WatchedMonitor& world) {
    world.prefs.setHostname("one.example");
    world.resolve("one.example", "192.0.2.1");
    world.prefs.setSlowPingThresholdMs(150);
    world.prefs.setPingInterval(5);
    world.prefs.setShowNotifications(true);
    world.watchFor(20);
}

namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

/// Minutes of 100 days with good ones, bad ones, nights asleep and a holiday.
History someHundredDays(HistoryTime until) {
    History history{.until = until};
    std::mt19937 random(11); // NOLINT(cert-msc51-cpp): the same every time
    std::lognormal_distribution<double> latency(3, 0.25);
    for (HistoryTime start = floorTo(until, minutes(15)) - days(74); start < until; start += minutes(15)) {
        const auto hour = (start - floorTo(start, days(1))) / hours(1);
        const auto day = (until - start) / days(1);
        if (hour < 6 || (day > 30 && day < 35)) {
            continue;
        }
        Period period{.start = start, .length = PeriodLength::quarterHour};
        period.figures.watchedSeconds = 900;
        for (period.figures.sent = 0; period.figures.sent < 180; ++period.figures.sent) {
            const double ms = latency(random) * (hour == 20 ? 2.2 : 1);
            period.figures.addAnswer(ms);
            period.figures.addDifference(ms / 10);
        }
        history.periods.push_back(period);
    }
    for (int night = 74; night >= 0; --night) {
        const HistoryTime midnight = floorTo(until, days(1)) - days(night);
        history.gaps.push_back(
            {.kind = Gap::Kind::asleep, .span = {.from = midnight, .to = midnight + hours(6)}});
    }
    return history;
}

void addBad(
    History& history, Episode::Kind kind, int daysAgo, seconds clock, seconds length,
    const Verdict& verdict) {
    const HistoryTime start = floorTo(history.until, days(1)) - days(daysAgo) + clock;
    history.episodes.push_back({.kind = kind, .start = start, .end = start + length, .verdict = verdict});
}

History historyOfPicture(HistoryTime until) {
    using enum Episode::Kind;
    History history = someHundredDays(until);
    const Verdict provider{
        .blame = Blame::provider,
        .likelihood = Likelihood::likely,
        .evidence = "Your router answers in 2 ms; nothing beyond it has answered for 3 min."};
    const Verdict wifi{
        .blame = Blame::wifi,
        .likelihood = Likelihood::likely,
        .evidence = "The Wi-Fi signal is weak (-82 dBm), and the router answers late."};
    Verdict noWifi = wifi;
    noWifi.evidence = "The Wi-Fi signal is weak (-84 dBm), and the router does not answer.";
    const Verdict load{
        .blame = Blame::ownLoad,
        .likelihood = Likelihood::possible,
        .evidence = "Latency rises from 20 to 160 ms while this computer uploads 9 Mbit/s."};
    const Verdict beyond{
        .blame = Blame::beyondProvider,
        .likelihood = Likelihood::possible,
        .evidence = "The provider's network answers up to 198.51.100.7; loss begins after it."};
    addBad(history, outage, 61, hours(9), minutes(40), provider);
    addBad(history, degradation, 52, hours(19), minutes(12), load);
    addBad(history, outage, 47, hours(23), minutes(8), provider);
    addBad(history, outage, 38, hours(7), seconds(95), beyond);
    addBad(history, degradation, 22, hours(20), minutes(9), load);
    addBad(history, degradation, 21, hours(20), minutes(14), load);
    addBad(history, outage, 12, hours(13) + minutes(4), seconds(42), noWifi);
    addBad(history, degradation, 5, hours(20) + minutes(15), seconds(640), load);
    addBad(history, outage, 3, hours(10) + seconds(732), seconds(187), provider);
    addBad(history, outage, 3, hours(18) + seconds(2405), minutes(21), provider);
    addBad(history, degradation, 1, hours(20) + seconds(75), seconds(95), wifi);
    return history;
}

History historyOf(const OutagesScene& scene, HistoryTime until) {
    using Past = OutagesScene::Past;
    if (scene.past == Past::unknown) {
        return {.until = until};
    }
    History history = scene.past == Past::usual ? historyOfPicture(until) : someHundredDays(until);
    const Verdict verdict{
        .blame = Blame::beyondProvider,
        .likelihood = Likelihood::possible,
        .evidence =
            "The provider's network answers up to 2001:db8:ffff:ffff:ffff:ffff:ffff:ffff; loss begins "
            "after it, at 2001:db8:eeee:eeee:eeee:eeee:eeee:eeee and beyond."};
    const int count = scene.past == Past::hundreds ? 700 : scene.past == Past::oneOutage ? 1 : 0;
    for (int number = 0; number < count; ++number) {
        const auto kind = number % 3 == 2 ? Episode::Kind::degradation : Episode::Kind::outage;
        addBad(history, kind, 73 - number / 10, hours(7 + number % 10), seconds(40 + 5 * number), verdict);
    }
    if (scene.isRunning) {
        history.episodes.push_back({.start = until - seconds(187), .verdict = verdict});
    }
    return history;
}

seconds offsetOf(const OutagesScene& scene, HistoryTime time) {
    constexpr std::chrono::sys_days change = std::chrono::year(2026) / 10 / 25;
    return hours(scene.seesChange ? (time < change + hours(1) ? 2 : 1) : 0);
}

} // namespace

QImage grabOutages(const OutagesScene& scene) {
    simulation::VirtualRunLoop loop;
    constexpr std::chrono::sys_days today = std::chrono::year(2026) / 11 / 23;
    loop.setWallClock(today + hours(15) + minutes(7));
    Observed<Reading> reading;
    reading.set({.host = scene.host, .chart = {.lowThresholdMs = 100, .highThresholdMs = 1000}});
    test::StandardMenu menu;
    OutagesWindow window(
        {.loop = loop,
         .reading = reading,
         .keepsHistory = [] { return true; },
         .read = [&scene](const Span& span) { return historyOf(scene, span.to); },
         .version = "1.2",
         .offset = [&scene](HistoryTime time) { return offsetOf(scene, time); }},
        menu.menu);
    window.present();
    QApplication::processEvents();
    for (int day = 0; day < scene.daysAgo; ++day) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left);
    }
    QApplication::processEvents();
    return window.grab().toImage();
}

} // namespace tarnwick::scenes
