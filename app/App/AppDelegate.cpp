#include "app/App/AppDelegate.h"

#include "app/App/MainMenu.h"
#include "app/App/PingAllowance.h"
#include "app/App/PresentLoginItem.h"
#include "app/App/ProgramIcon.h"
#include "core/Storage/UserFolders.h"
#include "core/Text.h"
#include "platform/linux/NameServers.h"
#include "platform/linux/PingPermission.h"
#include "platform/linux/ProcessNames.h"
#include "platform/linux/Routers.h"
#include "platform/linux/RunningProgram.h"
#include "platform/linux/Sandbox.h"
#include "platform/qt/Appearance.h"
#include "platform/qt/TrayStatusItem.h"
#include "platform/qt/WindowSystem.h"
#include "platform/theme/PanelThemes.h"
#include "platform/wayland/StartupSequence.h"
#include "platform/xdg/PresentDesktop.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSystemTrayIcon>

#include <cstdio>
#include <utility>

namespace tarnwick {

namespace {

/// For desktops that publish no color scheme.
Ink inkOfPalette() {
    return inkOn(Appearance::isDark());
}

/// A classic tray does not publish its color. Most are dark; on a light desktop the tray is taken for light.
class FollowingTrayItem final : public TrayStatusItem {
public:
    FollowingTrayItem(const FacePainter& painter, ColorScheme& colors)
        : TrayStatusItem(painter, inkInTray(colors)),
          colorChange_(colors.onChange([this, &colors] { setInk(inkInTray(colors)); })) {}

private:
    static Ink inkInTray(const ColorScheme& colors) {
        return onPlate(inkOn(colors.desktopIsDark().value_or(true)));
    }

    Subscription colorChange_;
};

std::vector<double> screenScales() {
    std::vector<double> scales;
    for (const QScreen* screen : QGuiApplication::screens()) {
        scales.push_back(screen->devicePixelRatio());
    }
    return scales;
}

void say(const std::string& text) {
    std::fprintf(stderr, "tarnwick: %s\n", text.c_str());
}

} // namespace

AppDelegate::AppDelegate(RunLoop& loop, BusConnection& bus, const Setup& setup)
    : loop_(loop),
      bus_(bus),
      settings_(loop, SettingsFile::defaultPath(), setup.settings),
      surroundings_(loop),
      notifications_(loop, bus, DesktopNotificationCenter::surroundings(isSandboxed()), setup.iconFolder),
      loginItem_(presentLoginItem(bus, isSandboxed())),
      monitor_(settings_.preferences(), surroundings_.environment(notifications_)),
      tokenWithoutPanel_(setup.tokenWithoutPanel),
      bundle_(setup.bundle),
      updater_(updaterNeeds(setup)),
      menu_(StatusItemController::menuItems(bundle_ != nullptr)),
      settingsModel_(
          monitor_, notifications_, *loginItem_, updater_.controller() != nullptr ? &updater_ : nullptr),
      colors_(bus),
      panelTheme_(loop, ThemeFolders::ofSession()),
      programColors_(loop, ThemeFolders::ofSession()),
      itemFinder_(bus),
      extensionOffer_(bus, monitor_, StatsStore::supportDirectory() / "Tarnwick" / "extension-answered"),
      historyClearing_(
          monitor_, settingsModel_,
          [this](const Question& question, std::function<void(bool)> answered) {
              windows_->ask(question, std::move(answered));
          }),
      replacement_(loop, [this] { monitor_.setNotice(newVersionNotice()); }) {
    settings_.tellMistakes([this](const std::vector<std::string>& mistakes) {
        for (const std::string& mistake : mistakes) {
            say(Text::printable(mistake));
        }
        monitor_.setSettingsMistakes(mistakes);
    });
    makeStatusItem(setup);
    monitor_.start();
    sessionEnd_ = std::make_unique<SessionEnd>([this] { save(); });
    displayLoss_ = std::make_unique<DisplayLoss>([this] {
        save();
        if (bundle_ != nullptr) {
            bundle_->trial().endWell();
        }
    });
    startUpdater();
}

AppDelegate::~AppDelegate() {
    monitor_.saveStats();
    if (const std::string& problem = monitor_.measured().recordingProblem; !problem.empty()) {
        say("the statistics could not be stored: " + problem);
    }
}

void AppDelegate::pause(int seconds) {
    if (seconds == 0) {
        monitor_.resume();
    } else {
        monitor_.pause(seconds);
    }
}

Updater::Needs AppDelegate::updaterNeeds(const Setup& setup) {
    if (setup.bundle != nullptr) {
        bundleUpdates_.emplace(
            loop_, surroundings_.systemBus(), settings_.preferences(), setup.bundle->update());
    }
    return {
        .loop = loop_,
        .preferences = settings_.preferences(),
        .makeEngine = [this]() -> std::unique_ptr<UpdateEngine> {
            if (!bundleUpdates_) {
                return nullptr;
            }
            return bundleUpdates_->makeEngine();
        },
        .icon = programIcon,
        .furnish = [this](QWidget& window) { MainMenu::install(window, menu_); },
        .restart = setup.restart};
}

void AppDelegate::startUpdater() {
    if (bundle_ != nullptr && bundle_->trial().isOn()) {
        endOfTrial_ = loop_.after(BundleTrial::length, [this] { bundle_->trial().pass(loop_); });
    }
    updater_.start();
    if (const Updater::Controller* const controller = updater_.controller()) {
        updateNotices_.emplace(loop_, monitor_, *controller->engine);
    }
}

bool AppDelegate::hasUpdateReady() const {
    const Updater::Controller* const controller = updater_.controller();
    return controller != nullptr && std::holds_alternative<Updating::Ready>(controller->engine->state());
}

std::function<void()> AppDelegate::allowingPing() {
    if (!PingAllowance::canAsk()) {
        return nullptr;
    }
    return [this] {
        const auto tryAgain = lifeline_.guarded([this](bool isAllowed) {
            if (isAllowed) {
                monitor_.tryAgain();
            } else {
                monitor_.allowingFailed();
            }
        });
        if (const auto range = PingPermission::missingRange()) {
            PingAllowance::ask(*range, tryAgain);
        } else {
            tryAgain(true); // it has been allowed since
        }
    };
}

void AppDelegate::offerApplications() {
    const auto program = runningProgram();
    if (!program || bundle_ == nullptr) {
        return;
    }
    const MenuEntry menu(
        {.program = *program,
         .share = bundle_->folder() / "share",
         .userData = UserFolders::data(),
         .systemFolders = UserFolders::systemData()});
    applicationsOffer_.emplace(ApplicationsOffer::Needs{
        .monitor = monitor_,
        .settings = settingsModel_,
        .menu = menu,
        .session = AutostartEntry::presentSession(),
        .program = *program,
        .bundle = bundle_->folder(),
        .answered = StatsStore::supportDirectory() / "Tarnwick" / "applications-answered",
        .ask =
            [this](const Question& question, std::function<void(bool)> answered) {
                windows_->ask(question, std::move(answered));
            },
        .forgetUpdates = [this] { bundle_->forgetUpdates(loop_); }});
    applicationsOffer_->start();
}

void AppDelegate::makeStatusItem(const Setup& setup) {
    settingsModel_.allowPinging = allowingPing();
    settingsModel_.answerOffer = [this](bool switchOn) { extensionOffer_.answer(switchOn); };
    settingsModel_.restart = setup.restart;
    settingsModel_.historyFile = UserFolders::shown(SqliteJournal::defaultPath());
    settingsModel_.networkServers = [] {
        return NetworkServers{.routers = Routers::present(), .nameServers = NameServers::present()};
    };
    offerApplications();
    windows_ = std::make_unique<DesktopWindows>(
        loop_, monitor_.observedReading(), menu_, settingsModel_, setup.version,
        NoticeActions{
            .allowPinging = settingsModel_.allowPinging,
            .answerOffer = settingsModel_.answerOffer,
            .answerApplications = settingsModel_.answerApplications,
            .restart = setup.restart},
        PastSource{
            .read = [this](const Span& span) { return monitor_.history(span); },
            .whyEmpty = [this] { return monitor_.whyNoHistory(); }},
        OutagesModel::Needs{
            .loop = loop_,
            .reading = monitor_.observedReading(),
            .keepsHistory = [this] { return settings_.preferences().keepsHistory(); },
            .read = [this](const Span& span) { return monitor_.history(span); },
            .version = setup.version});
    panelMenu_ = std::make_unique<PanelMenuText>(
        loop_, monitor_.observedReading(), menu_,
        PanelMenuText::Actions{
            .openDropDown = [this] { windows_->openDropDownAtPointer(); },
            .copyCommand = [this](const std::string& command) { windows_->copy(command); },
            .allowPinging = settingsModel_.allowPinging});
    notifier_ = std::make_unique<NotifierStatusItem>(NotifierStatusItem::Needs{
        .loop = loop_,
        .bus = bus_,
        .painter = painter_,
        .menu = *panelMenu_,
        .colors = colors_,
        .panelTheme = panelTheme_,
        .processNames = processNames,
        .iconThemePath = setup.iconFolder,
        .screenScales = screenScales,
    });
    followColors();
    if (PresentDesktop::isGnome()) {
        windows_->setItemFinder([this](DropDown::Found found) { itemFinder_.find(std::move(found)); });
        extensionOffer_.start();
    }
    windows_->takeActivationToken = [this] { return notifier_->takeActivationToken(); };
    item_ = std::make_unique<PanelStatusItem>(PanelStatusItem::Needs{
        .loop = loop_,
        .notifier = *notifier_,
        .hasWatcher = [this] { return notifier_->hasWatcher(); },
        .makeTrayItem = [this]() -> std::unique_ptr<StatusItem> {
            if (!WindowSystem::isX11()) {
                return nullptr;
            }
            return std::make_unique<FollowingTrayItem>(painter_, colors_);
        },
        .hasTray = [] { return QSystemTrayIcon::isSystemTrayAvailable(); },
        .shownChanged = [this](bool isShown) { tellOfPanel(isShown); },
    });
    notifier_->onWatcherChange = [this] {
        item_->watcherChanged();
        tellOfRoomForText();
    };
    notifier_->onShowsTextChange = [this] { tellOfRoomForText(); };
    controller_ = std::make_unique<StatusItemController>(StatusItemController::Needs{
        .loop = loop_,
        .monitor = monitor_,
        .item = *item_,
        .menu = menu_,
        .windows = *windows_,
        .textWidth = [this](const std::string& text) { return painter_.textWidth(text); },
        .updates = bundle_ != nullptr ? &updater_ : nullptr});
}

void AppDelegate::tellOfPanel(bool showsItem) {
    isItemShown_ = showsItem;
    tellOfRoomForText();
    const auto token = std::exchange(tokenWithoutPanel_, std::nullopt);
    if (showsItem) {
        monitor_.clearNotice(Notice::Kind::noPanel);
        if (wl_display* const display = WindowSystem::waylandDisplay(); display != nullptr && token) {
            Wayland::endStartupSequence(*display, *token); // no window opens that would end it
        }
        return;
    }
    const Notice notice = noPanelNotice(PresentDesktop::isGnome());
    monitor_.setNotice(notice);
    if (!std::exchange(hasSaidOfPanel_, true)) {
        say(notice.line());
    }
    if (token) {
        windows_->openDropDown(*token);
    }
}

void AppDelegate::tellOfRoomForText() {
    // The classic tray has square places.
    const bool hasRoom = notifier_->hasWatcher() && notifier_->showsText();
    settingsModel_.setRoomForText(!isItemShown_ || hasRoom);
}

void AppDelegate::followColors() {
    if (PresentDesktop::isPlasma()) {
        // Not every version of the toolkit follows them.
        programColors_.follow(plasmaProgramColors);
    }
    preferColors();
    colorChange_ = colors_.onChange([this] { preferColors(); });
    programColors_.onChange = [this] { preferColors(); };
    notifier_->setFallbackInk(inkOfPalette());
    paletteWatch_ = std::make_unique<PaletteWatch>([this] {
        preferColors(); // the toolkit's own colors may have changed
        notifier_->setFallbackInk(inkOfPalette());
    });
}

void AppDelegate::preferColors() {
    const auto isDark = colors_.desktopIsDark() ? colors_.desktopIsDark() : programColors_.isDark();
    Appearance::prefer(isDark, colors_.desktopWantsContrast());
}

void AppDelegate::save() {
    monitor_.saveStats();
    settings_.preferences().flush();
}

} // namespace tarnwick
