// Draws faces, drop-downs and the settings window for people to look at.
//
//     tarnwick-pictures FOLDER [SCALE]        all of them
//     tarnwick-pictures --readme FOLDER       those of the README, whose folder is docs/pictures
#include "app/App/SettingsWindow.h"
#include "app/SettingsView/SettingsView.h"
#include "app/StatusItemController/Painting/QtFacePainter.h"
#include "app/StatusMenuView/DropDown.h"
#include "app/StatusMenuView/DropDownWindow.h"
#include "app/StatusMenuView/MenuItemsView.h"
#include "platform/qt/Appearance.h"
#include "tests/app/StatusItemController/Painting/Ink.h"
#include "tests/app/StatusMenuView/StandardMenu.h"
#include "tests/app/WatchedMonitor.h"
#include "tests/simulation/FakeLoginItem.h"
#include "tests/simulation/FakeUpdateFramework.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QImage>
#include <QLocale>
#include <QPainter>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <netinet/in.h>
#include <random>
#include <vector>

namespace tarnwick {

namespace {

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

std::vector<StatusFace> faces() {
    using Icon = StatusFace::Icon;
    std::vector<StatusFace> all;
    for (int bars = 0; bars <= 5; ++bars) {
        all.push_back(face(Icon::bars, bars, "", ""));
    }
    all.push_back(face(Icon::failed, 0, "", ""));
    all.push_back(face(Icon::bars, 0, "…", "…"));
    all.push_back(face(Icon::bars, 5, "9ms", "9"));
    all.push_back(face(Icon::bars, 5, "42ms", "42"));
    all.push_back(face(Icon::bars, 3, "0.3s (3%)", "0.3s"));
    all.push_back(face(Icon::bars, 1, "1.2s (15%)", "1.2s"));
    all.push_back(face(Icon::failed, 0, "Failed", ""));
    all.push_back(face(Icon::none, 0, "42ms", "42"));
    all.push_back(face(Icon::none, 0, "1.2s", "1.2s"));
    return all;
}

QImage sheet(StatusItem::Form form, int height, Ink ink, int zoom) {
    const int gap = height / 3;
    std::vector<QImage> images;
    int width = gap;
    for (const StatusFace& each : faces()) {
        images.push_back(painted(each, form, height, ink));
        width += images.back().width() + gap;
    }
    QImage result(width, height + 2 * gap, QImage::Format_ARGB32);
    result.fill(ink == Ink::light ? QColor(0x2b, 0x2e, 0x36) : QColor(0xee, 0xee, 0xee));
    QPainter painter(&result);
    int x = gap;
    for (const QImage& image : images) {
        painter.drawImage(x, gap, image);
        x += image.width() + gap;
    }
    painter.end();
    return result.scaled(result.size() * zoom);
}

void drawFaces(const QDir& folder) {
    using Form = StatusItem::Form;
    for (const auto& [form, name] :
         {std::pair{Form::square, "square"}, std::pair{Form::wide, "wide"},
          std::pair{Form::label, "label"}}) {
        for (const int height : {16, 22, 24, 32, 48}) {
            const QString file = QStringLiteral("face-%1-%2").arg(QLatin1String(name)).arg(height);
            sheet(form, height, Ink::light, 1).save(folder.filePath(file + "-light.png"));
            sheet(form, height, Ink::dark, 1).save(folder.filePath(file + "-dark.png"));
            sheet(form, height, Ink::light, 4).save(folder.filePath(file + "-light-x4.png"));
        }
    }
}

QPalette lightPalette() {
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0xfa, 0xfa, 0xfa));
    palette.setColor(QPalette::WindowText, QColor(0x1d, 0x1f, 0x23));
    palette.setColor(QPalette::Highlight, QColor(0x2a, 0x6f, 0xdb));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x9a, 0x9d, 0xa3));
    return palette;
}

QPalette darkPalette() {
    QPalette palette = lightPalette();
    palette.setColor(QPalette::Window, QColor(0x28, 0x2a, 0x30));
    palette.setColor(QPalette::WindowText, QColor(0xf1, 0xf2, 0xf4));
    palette.setColor(QPalette::Highlight, QColor(0x3d, 0x7e, 0xe6));
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x7c, 0x80, 0x88));
    return palette;
}

/// A long quiet day, and at its end five minutes with slow pings and a short outage in them.
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

/// One of each kind that tells of no ping socket.
void addNotices(WatchedMonitor& world) {
    world.monitor.setSettingsMistakes(
        {"/home/one/.config/Tarnwick/settings.json, line 3: PingTimeout must be a number of seconds from "
         "0.01 "
         "to 3600, not -3",
         "another"});
    world.monitor.setNotice(noPanelNotice({"GNOME"}));
    world.monitor.setNotice(
        {.kind = Notice::Kind::notRecorded,
         .text = "The statistics are not stored: No space left on device."});
}

QImage grabDropDown(WatchedMonitor& world, const test::StandardMenu& menu, int steps, const QString& name) {
    Menu shown(menu.menu.items());
    DropDown dropDown(
        world.monitor.observedReading(), shown, world.loop, NoticeActions{.allowPinging = [] {}});
    const auto begin = std::chrono::steady_clock::now();
    dropDown.open(ScreenPoint{400, 4});
    QApplication::processEvents();
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - begin;
    std::printf("%s: opened in %.1f ms\n", qPrintable(name), taken.count());
    for (int step = 0; step < steps; ++step) {
        dropDown.window()->items().highlightNext(1);
    }
    return dropDown.window()->grab().toImage();
}

/// On a ground that goes with its colors.
QImage onGround(const QImage& window) {
    QImage picture(window.size(), QImage::Format_ARGB32_Premultiplied);
    picture.setDevicePixelRatio(window.devicePixelRatio());
    const bool isDark = QApplication::palette().color(QPalette::Window).lightnessF() < 0.5F;
    picture.fill(isDark ? QColor(0x4a, 0x52, 0x62) : QColor(0xd3, 0xda, 0xe4));
    QPainter painter(&picture);
    painter.drawImage(0, 0, window);
    return picture;
}

/// Each state of the connection, with the application's colors and font.
void drawDropDowns(const QDir& folder, const QString& style) {
    test::StandardMenu menu;
    const auto save = [&](WatchedMonitor& world, int steps, const QString& state) {
        const QString name = "drop-down-" + state + "-" + style;
        onGround(grabDropDown(world, menu, steps, name)).save(folder.filePath(name + ".png"));
    };
    {
        WatchedMonitor world;
        world.fallSilent();
        world.watchFor(0.5);
        save(world, 0, "empty");
    }
    {
        WatchedMonitor world;
        watchBusily(world);
        save(world, 1, "busy");
    }
    {
        WatchedMonitor world;
        world.watchFor(200);
        world.fallSilent();
        menu.menu.setHidden(MenuItem::Id::changeHost, !world.waitUntilDown());
        world.loop.advance(60);
        save(world, 0, "down");
    }
    {
        WatchedMonitor world;
        world.network.setSocketError(AF_INET, "Permission denied");
        world.missingPermission = "sudo sysctl -w net.ipv4.ping_group_range=\"1000 1000\"";
        menu.menu.setHidden(MenuItem::Id::changeHost, true);
        world.watchFor(20);
        addNotices(world);
        save(world, 0, "notices");
    }
}

/// The settings window after a click on a switch, if any, with the application's colors, font and locale.
QImage grabSettings(
    WatchedMonitor& world, simulation::FakeLoginItem& loginItem, const QString& clicked = {},
    UpdateFramework* updates = nullptr) {
    test::StandardMenu menu;
    SettingsModel model(world.monitor, world.notifications, loginItem, updates);
    model.launchAtLogin().showApproval = [] {};
    model.allowPinging = [] {};
    SettingsWindow window(model, world.loop, menu.menu);
    window.present();
    for (QCheckBox* box : window.findChildren<QCheckBox*>()) {
        if (box->accessibleName() == clicked) {
            box->click();
        }
    }
    world.loop.runPending();
    QApplication::processEvents();
    return window.view().grab().toImage(); // all of it, however low the screen is
}

void changeSomeSettings(WatchedMonitor& world) {
    world.prefs.setHostname("one.example");
    world.resolve("one.example", "192.0.2.1");
    world.prefs.setSlowPingThresholdMs(150);
    world.prefs.setPingInterval(5);
    world.prefs.setShowNotifications(true);
    world.watchFor(20);
}

void drawSettings(const QDir& folder, const QString& style) {
    WatchedMonitor world;
    changeSomeSettings(world);
    simulation::FakeLoginItem loginItem;
    loginItem.now = LoginItem::Status::enabled;
    grabSettings(world, loginItem).save(folder.filePath("settings-" + style + ".png"));
    loginItem.now = LoginItem::Status::requiresApproval;
    grabSettings(world, loginItem).save(folder.filePath("settings-switched-off-" + style + ".png"));
    {
        WatchedMonitor refused;
        refused.network.setSocketError(AF_INET, "Permission denied");
        refused.missingPermission = "sudo sysctl -w net.ipv4.ping_group_range=\"1000 1000\"";
        refused.notifications.answer = NotificationCenter::Ability::no;
        refused.prefs.setShowNotifications(true);
        refused.watchFor(20);
        addNotices(refused);
        grabSettings(refused, loginItem).save(folder.filePath("settings-notices-" + style + ".png"));
    }
    loginItem.now = LoginItem::Status::notRegistered;
    loginItem.failure = "The folder /home/one/.config/autostart can't be written: Permission denied";
    grabSettings(world, loginItem, "Launch at Login")
        .save(folder.filePath("settings-refused-" + style + ".png"));
    simulation::FakeUpdateFramework updates;
    updates.checks = true;
    updates.lastCheck = RunLoop::WallTime(std::chrono::hours(24 * 365 * 56));
    for (const char* const language : {"de_DE", "ar_EG"}) {
        const QLocale locale{QLatin1String(language)};
        QLocale::setDefault(locale);
        QApplication::setLayoutDirection(locale.textDirection());
        world.prefs.setSlowPingThresholdMs(2000);
        world.prefs.setPingInterval(60);
        grabSettings(world, loginItem, {}, &updates)
            .save(folder.filePath("settings-" + QLatin1String(language) + "-" + style + ".png"));
    }
    QLocale::setDefault(QLocale::c());
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

void drawInBothColors(const QDir& folder, const QString& scale, double points) {
    QFont font = QApplication::font();
    font.setPointSizeF(points);
    QApplication::setFont(font);
    const QString size = QStringLiteral("%1pt-%2x").arg(points).arg(scale);
    for (const bool isDark : {false, true}) {
        const QString style = (isDark ? "dark-" : "light-") + size;
        QApplication::setPalette(isDark ? darkPalette() : lightPalette());
        drawDropDowns(folder, style);
        Appearance::prefer(isDark);
        drawSettings(folder, style);
    }
}

/// Wide and square faces one below the other, on a light panel and on a dark one.
QImage faceStrips() {
    using Form = StatusItem::Form;
    std::vector<QImage> strips;
    for (const Form form : {Form::wide, Form::square}) {
        for (const Ink ink : {Ink::dark, Ink::light}) {
            strips.push_back(sheet(form, 44, ink, 1));
        }
    }
    int width = 0;
    int height = 0;
    for (const QImage& strip : strips) {
        width = std::max(width, strip.width());
        height += strip.height();
    }
    QImage picture(width, height, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    int y = 0;
    for (const QImage& strip : strips) {
        painter.fillRect(0, y, width, strip.height(), strip.pixelColor(0, 0));
        painter.drawImage(0, y, strip);
        y += strip.height();
    }
    return picture;
}

void drawSettingsForReadme(const QDir& folder) {
    WatchedMonitor world;
    changeSomeSettings(world);
    simulation::FakeLoginItem loginItem;
    loginItem.now = LoginItem::Status::enabled;
    for (const bool isDark : {false, true}) {
        Appearance::prefer(isDark);
        const QString name = isDark ? "settings-dark.png" : "settings-light.png";
        grabSettings(world, loginItem).save(folder.filePath(name));
    }
}

void drawForReadme(const QDir& folder) {
    const test::StandardMenu menu;
    WatchedMonitor world;
    watchBusily(world);
    QApplication::setPalette(lightPalette());
    grabDropDown(world, menu, 0, "light").save(folder.filePath("drop-down-light.png"));
    QApplication::setPalette(darkPalette());
    grabDropDown(world, menu, 0, "dark").save(folder.filePath("drop-down-dark.png"));
    faceStrips().save(folder.filePath("faces.png"));
    drawSettingsForReadme(folder);
}

} // namespace

} // namespace tarnwick

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.empty() || arguments.size() > 2) {
        std::fputs("Usage: tarnwick-pictures FOLDER [SCALE] | --readme FOLDER\n", stderr);
        return 2;
    }
    const bool isForReadme = arguments.front() == "--readme" && arguments.size() == 2;
    const bool hasScale = arguments.size() == 2 && !isForReadme;
    const std::string scale = hasScale ? arguments.back() : isForReadme ? "2" : "1";
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_SCALE_FACTOR", QByteArray::fromStdString(scale));
    const QApplication application(argc, argv);
    const QDir folder(QString::fromStdString(isForReadme ? arguments.back() : arguments.front()));
    folder.mkpath(".");
    if (isForReadme) {
        tarnwick::drawForReadme(folder);
        return 0;
    }
    if (scale == "1") {
        tarnwick::drawFaces(folder);
    }
    tarnwick::drawInBothColors(folder, QString::fromStdString(scale), 10);
    tarnwick::drawInBothColors(folder, QString::fromStdString(scale), 15);
    return 0;
}
