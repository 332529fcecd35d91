#include "app/App/DesktopWindows.h"

#include <QGuiApplication>

#include <utility>

namespace tarnwick {

namespace {

/// On Wayland the toolkit takes it from the environment for the next window that is activated, and removes it
/// there. Elsewhere it would stay there for every program that is started from here.
void useActivationToken(const std::string& token) {
    if (!token.empty() && QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) {
        qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(token));
    }
}

} // namespace

DesktopWindows::DesktopWindows(
    RunLoop& loop, Monitor& monitor, Menu& menu, std::string version, std::function<void()> openSettings)
    : dropDown_(monitor, menu, loop), about_(std::move(version)), openSettings_(std::move(openSettings)) {
}

void DesktopWindows::toggleDropDown(std::optional<ScreenPoint> at) {
    useActivationTokenOfClick();
    dropDown_.toggle(at);
}

void DesktopWindows::openDropDown(const std::string& activationToken) {
    useActivationToken(activationToken);
    dropDown_.open(std::nullopt);
}

void DesktopWindows::showAbout() {
    useActivationTokenOfClick();
    about_.show();
}

void DesktopWindows::ask(const Question& question, std::function<void(bool)> answered) {
    useActivationTokenOfClick();
    confirm_.ask(question.text, question.confirm, std::move(answered));
}

void DesktopWindows::quit() {
    // Asks no window.
    QGuiApplication::exit();
}

void DesktopWindows::useActivationTokenOfClick() const {
    useActivationToken(takeActivationToken ? takeActivationToken() : "");
}

} // namespace tarnwick
