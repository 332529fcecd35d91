#include "app/App/DesktopWindows.h"

#include "app/App/StartupSettings.h"
#include "platform/qt/Clipboard.h"
#include "platform/qt/WindowSystem.h"

#include <QGuiApplication>

#include <utility>

namespace tarnwick {

namespace {

constexpr auto activationTokenVariable = "XDG_ACTIVATION_TOKEN";

/// On Wayland the toolkit takes the token from the environment for the next window that it activates, and
/// removes it. On other platforms the token would stay there, and programs started from here would inherit
/// it.
void useActivationToken(const std::string& token) {
    if (!token.empty() && WindowSystem::isWayland()) {
        qputenv(activationTokenVariable, QByteArray::fromStdString(token));
    }
}

/// A token is good for one window; this one has not opened.
void dropActivationToken() {
    qunsetenv(activationTokenVariable);
}

} // namespace

DesktopWindows::DesktopWindows(
    RunLoop& loop, const Observed<Reading>& reading, Menu& menu, SettingsModel& settings, std::string version,
    const NoticeActions& actions, const PastSource& past, OutagesModel::Needs outages)
    : loop_(loop),
      menu_(menu),
      settings_(settings),
      dropDown_(reading, menu, loop, actions, past),
      outages_(std::move(outages)),
      about_(std::move(version), settings.historyFile, menu),
      confirm_(menu) {
}

void DesktopWindows::toggleDropDown(std::optional<ScreenPoint> at) {
    if (!dropDown_.isOpen()) {
        useActivationTokenOfClick();
    }
    dropDown_.toggle(at);
    if (!dropDown_.isOpen() && !dropDown_.looksForItem()) {
        dropActivationToken();
    }
}

void DesktopWindows::setItemFinder(std::function<void(DropDown::Found)> find) {
    dropDown_.findItem = std::move(find);
}

void DesktopWindows::openDropDownAtPointer() {
    useActivationTokenOfClick();
    dropDown_.openAtPointer();
}

void DesktopWindows::copy(const std::string& text) {
    Clipboard::copy(text);
    if (WindowSystem::isWayland()) {
        openDropDownAtPointer();
    }
}

void DesktopWindows::openDropDown(const std::string& activationToken) {
    useActivationToken(activationToken);
    dropDown_.openAtItem();
}

void DesktopWindows::openSettings(const std::string& activationToken) {
    useActivationToken(activationToken);
    presentSettings();
}

void DesktopWindows::openOutages(const std::string& activationToken) {
    useActivationToken(activationToken);
    presentOutages();
}

void DesktopWindows::showOutages() {
    useActivationTokenOfClick();
    presentOutages();
}

void DesktopWindows::presentOutages() {
    if (!outagesWindow_) {
        outagesWindow_ = std::make_unique<OutagesWindow>(outages_, menu_);
    }
    outagesWindow_->present();
}

void DesktopWindows::showSettings() {
    useActivationTokenOfClick();
    presentSettings();
}

void DesktopWindows::presentSettings() {
    if (!settingsWindow_) {
        if (StartupSettings::exists()) {
            settings_.launchAtLogin().showApproval = [] { StartupSettings::open(); };
        }
        settingsWindow_ = std::make_unique<SettingsWindow>(settings_, loop_, menu_);
    }
    settingsWindow_->present();
}

void DesktopWindows::showAbout() {
    useActivationTokenOfClick();
    about_.show();
}

void DesktopWindows::ask(const Question& question, std::function<void(bool)> answered) {
    useActivationTokenOfClick();
    confirm_.ask(question, std::move(answered));
}

void DesktopWindows::quit() {
    // `quit` would ask each window, and an open one can refuse.
    QGuiApplication::exit();
}

void DesktopWindows::useActivationTokenOfClick() const {
    useActivationToken(takeActivationToken ? takeActivationToken() : "");
}

} // namespace tarnwick
