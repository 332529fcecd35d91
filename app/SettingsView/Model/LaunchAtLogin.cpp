#include "app/SettingsView/Model/LaunchAtLogin.h"

namespace tarnwick::LaunchAtLogin {

std::optional<std::string> set(LoginItem& item, bool enabled) {
    const bool isRegistered = item.status() != LoginItem::Status::notRegistered;
    if (enabled == isRegistered) {
        return std::nullopt;
    }
    return enabled ? item.enroll() : item.withdraw();
}

} // namespace tarnwick::LaunchAtLogin
