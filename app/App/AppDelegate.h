// Makes the parts of the desktop program, in order, and saves the statistics at the end.
#pragma once

#include "app/App/ApplicationsOffer.h"
#include "app/App/BundleRun.h"
#include "app/App/BundleUpdates.h"
#include "app/App/DesktopWindows.h"
#include "app/App/ExtensionOffer.h"
#include "app/App/HistoryClearing.h"
#include "app/App/UpdateNotices.h"
#include "app/Monitor/Monitor.h"
#include "app/StatusItemController/Painting/QtFacePainter.h"
#include "app/StatusItemController/PanelMenuText.h"
#include "app/StatusItemController/StatusItemController.h"
#include "app/Surroundings/SystemSurroundings.h"
#include "app/Updater/Updater.h"
#include "app/UserSettings/UserSettings.h"
#include "core/Lifeline.h"
#include "platform/bus/BusConnection.h"
#include "platform/bus/ColorScheme.h"
#include "platform/bus/DesktopNotificationCenter.h"
#include "platform/bus/ItemFinder.h"
#include "platform/linux/ProgramReplacement.h"
#include "platform/panel/NotifierStatusItem.h"
#include "platform/panel/PanelStatusItem.h"
#include "platform/qt/DisplayLoss.h"
#include "platform/qt/PaletteWatch.h"
#include "platform/qt/SessionEnd.h"
#include "platform/theme/ThemeWatch.h"
#include "platform/xdg/SettingsFile.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tarnwick {

/// Owns everything for the life of the process. Main thread.
class AppDelegate {
public:
    struct Setup {
        UserDefaults::Table settings; ///< for this run only
        std::string version;
        std::string iconFolder; ///< an icon theme with the program's own icons
        /// The activation token of a person's start. With it the drop-down opens once when it turns out that
        /// no panel shows the item.
        std::optional<std::string> tokenWithoutPanel = std::nullopt;
        std::function<void()> restart = nullptr; ///< ends the program and starts its file anew
        BundleRun* bundle = nullptr; ///< outlives the delegate; null where the program is installed
    };

    /// The loop and the bus outlive the delegate.
    AppDelegate(RunLoop& loop, BusConnection& bus, const Setup& setup);

    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;
    /// Saves the statistics.
    ~AppDelegate();

    /// For this start or another one. The desktop lets a window with this token come to the front.
    void openDropDown(const std::string& activationToken) { windows_->openDropDown(activationToken); }

    void openSettings(const std::string& activationToken) { windows_->openSettings(activationToken); }

    /// 0 resumes. A length that `PauseLength` does not admit is ignored.
    void pause(int seconds);

    void openOutages(const std::string& activationToken) { windows_->openOutages(activationToken); }

private:
    /// Asks an administrator to let this user ping; null where the desktop can't ask.
    [[nodiscard]] std::function<void()> allowingPing();
    /// In a bundle. The windows are made afterwards.
    void offerApplications();
    void makeStatusItem(const Setup& setup);
    void followColors();
    void preferColors();
    void tellOfPanel(bool showsItem);
    void tellOfRoomForText();
    [[nodiscard]] Updater::Needs updaterNeeds(const Setup& setup);
    void startUpdater();
    /// Whether a newer version can take the place of this one.
    [[nodiscard]] bool hasUpdateReady() const;
    void save();

    RunLoop& loop_;
    BusConnection& bus_;
    UserSettings settings_;
    SystemSurroundings surroundings_;
    DesktopNotificationCenter notifications_;
    std::unique_ptr<LoginItem> loginItem_;
    Monitor monitor_;
    std::optional<std::string> tokenWithoutPanel_; ///< until the drop-down opens or a panel shows the item
    bool hasSaidOfPanel_ = false;
    bool isItemShown_ = false; ///< by a panel, as far as is known
    BundleRun* bundle_;
    std::optional<BundleUpdates> bundleUpdates_;
    Updater updater_;
    Menu menu_;
    SettingsModel settingsModel_;
    QtFacePainter painter_;
    ColorScheme colors_;
    ThemeWatch panelTheme_;
    ThemeWatch programColors_; ///< followed in Plasma
    ItemFinder itemFinder_;
    ExtensionOffer extensionOffer_;
    std::optional<ApplicationsOffer> applicationsOffer_; ///< in a bundle
    HistoryClearing historyClearing_;
    ProgramReplacement replacement_;
    Subscription colorChange_;
    std::unique_ptr<DesktopWindows> windows_;
    std::unique_ptr<PanelMenuText> panelMenu_;
    std::unique_ptr<NotifierStatusItem> notifier_;
    std::unique_ptr<PanelStatusItem> item_;
    std::unique_ptr<StatusItemController> controller_;
    std::unique_ptr<PaletteWatch> paletteWatch_;
    std::unique_ptr<SessionEnd> sessionEnd_;
    std::unique_ptr<DisplayLoss> displayLoss_;
    std::optional<UpdateNotices> updateNotices_; ///< where there is an updater
    RunLoop::Handle endOfTrial_;
    Lifeline lifeline_;
};

} // namespace tarnwick
