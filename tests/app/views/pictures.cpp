// Draws faces, drop-downs and the settings window for people to look at.
//
//     tarnwick-pictures FOLDER [SCALE]        all of them
//     tarnwick-pictures --readme FOLDER       those of the README, whose folder is docs/pictures
#include "platform/qt/Appearance.h"
#include "tests/app/views/ReadmePictures.h"
#include "tests/app/views/Scenes.h"
#include "tests/simulation/FakeSoftwareUpdates.h"

#include <QApplication>
#include <QDir>
#include <QLocale>
#include <QPainter>
#include <QPalette>

#include <chrono>
#include <cstdio>
#include <netinet/in.h>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

using namespace scenes;

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

/// One of each kind that tells of no ping socket.
void addNotices(WatchedMonitor& world) {
    world.monitor.setSettingsMistakes(
        {"/home/one/.config/Tarnwick/settings.json, line 3: PingTimeout must be a number of seconds, "
         "0.01 to 3600, not -3",
         "another"});
    world.monitor.setNotice(noPanelNotice(true));
    world.monitor.setNotice(
        {.kind = Notice::Kind::notRecorded,
         .text = "The statistics are not stored: No space left on device."});
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
    bool offersChangeHost = false;
    const auto save = [&](WatchedMonitor& world, int steps, const QString& state) {
        const QString name = "drop-down-" + state + "-" + style;
        onGround(grabDropDown(world, offersChangeHost, steps, name)).save(folder.filePath(name + ".png"));
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
        for (const auto& [state, past] :
             {std::pair{"hour", PastView{HistoryChart::Reach::hour}},
              std::pair{"day", PastView{HistoryChart::Reach::day}},
              std::pair{"day-pointed", PastView{HistoryChart::Reach::day, 0.83}},
              std::pair{"week", PastView{HistoryChart::Reach::week, 0.45}}}) {
            const QString name = "drop-down-" + QLatin1String(state) + "-" + style;
            onGround(grabDropDown(world, false, 0, name, past)).save(folder.filePath(name + ".png"));
        }
    }
    {
        WatchedMonitor world;
        world.watchFor(200);
        world.fallSilent();
        offersChangeHost = world.waitUntilDown();
        world.loop.advance(60);
        save(world, 0, "down");
    }
    {
        WatchedMonitor world;
        world.network.setSocketError(AF_INET, "Permission denied");
        world.missingPermission = "sudo sysctl -w net.ipv4.ping_group_range=\"1000 1000\"";
        offersChangeHost = false;
        world.watchFor(20);
        addNotices(world);
        save(world, 0, "notices");
    }
}

void drawSettings(const QDir& folder, const QString& style) {
    WatchedMonitor world;
    changeSomeSettings(world);
    simulation::FakeLoginItem loginItem;
    loginItem.now = LoginItem::Status::enabled;
    grabSettings(world, loginItem).save(folder.filePath("settings-" + style + ".png"));
    grabSettings(world, loginItem, "Advanced").save(folder.filePath("settings-advanced-" + style + ".png"));
    grabSettings(world, loginItem, "Choose Host").save(folder.filePath("settings-hosts-" + style + ".png"));
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
    simulation::FakeSoftwareUpdates updates;
    updates.checks.set(true);
    updates.lastCheck.set(RunLoop::WallTime(std::chrono::hours(24 * 365 * 56)));
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

void drawOutages(const QDir& folder, const QString& style) {
    using Past = OutagesScene::Past;
    const std::string longHost = std::string(60, 'w') + "." + std::string(60, 'i') + ".example";
    for (const auto& [name, scene] :
         {std::pair{"usual", OutagesScene{}}, std::pair{"unknown", OutagesScene{Past::unknown}},
          std::pair{"good", OutagesScene{Past::good}},
          std::pair{"one", OutagesScene{Past::oneOutage, "::1", 73}},
          std::pair{"hundreds", OutagesScene{Past::hundreds, longHost, 20}},
          std::pair{"running", OutagesScene{.daysAgo = 0, .isRunning = true}},
          std::pair{"clock", OutagesScene{.daysAgo = 29, .seesChange = true}}}) {
        grabOutages(scene).save(folder.filePath("outages-" + QLatin1String(name) + "-" + style + ".png"));
    }
    QApplication::setLayoutDirection(Qt::RightToLeft);
    grabOutages().save(folder.filePath("outages-right-to-left-" + style + ".png"));
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

void drawUpdates(const QDir& folder, const QString& style) {
    const FoundUpdate update = someUpdate();
    const std::vector<std::pair<QString, UpdateState>> states{
        {"checking", Updating::Checking{true}},
        {"up-to-date", Updating::NothingNewer{}},
        {"found", Updating::Found{update, true}},
        {"downloading", Updating::Downloading{update, 7'400'000, true}},
        {"preparing", Updating::Preparing{update, true}},
        {"ready", Updating::Ready{update.release.version, true}},
        {"failed",
         Updating::Failed{"The update server can't prove who it is (The certificate has expired)."}}};
    for (const auto& [name, state] : states) {
        grabUpdate(state).save(folder.filePath("update-" + name + "-" + style + ".png"));
    }
}

void drawInBothColors(const QDir& folder, const QString& scale, double points) {
    QFont font = QApplication::font();
    font.setPointSizeF(points);
    QApplication::setFont(font);
    const QString size = QStringLiteral("%1pt-%2x").arg(points).arg(scale);
    for (const bool isDark : {false, true}) {
        const QString style = (isDark ? "dark-" : "light-") + size;
        Appearance::prefer(isDark);
        drawDropDowns(folder, style);
        drawSettings(folder, style);
        drawOutages(folder, style);
        drawUpdates(folder, style);
    }
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
    // On a low screen the drop-down would draw itself closer together.
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" TARNWICK_PICTURE_SCREEN);
    qputenv("QT_SCALE_FACTOR", QByteArray::fromStdString(scale));
    const QApplication application(argc, argv);
    const QDir folder(QString::fromStdString(isForReadme ? arguments.back() : arguments.front()));
    folder.mkpath(".");
    if (isForReadme) {
        tarnwick::drawReadmePictures(folder);
        return 0;
    }
    if (scale == "1") {
        tarnwick::drawFaces(folder);
    }
    tarnwick::drawInBothColors(folder, QString::fromStdString(scale), 10);
    tarnwick::drawInBothColors(folder, QString::fromStdString(scale), 15);
    return 0;
}
