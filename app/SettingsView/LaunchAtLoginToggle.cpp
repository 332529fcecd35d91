#include "app/SettingsView/LaunchAtLoginToggle.h"

#include "app/App/LaunchAtLogin.h"

namespace tarnwick {

using Status = LoginItem::Status;

LaunchAtLoginToggle::LaunchAtLoginToggle(LoginItem& item) : item_(item) {
    refresh();
}

bool LaunchAtLoginToggle::isReallyOn() const {
    return item_.status() != Status::notRegistered;
}

void LaunchAtLoginToggle::refresh() {
    isOn_.set(isReallyOn());
    message_.set(std::nullopt);
}

void LaunchAtLoginToggle::set(bool on) {
    isOn_.set(on);
    if (on == isReallyOn()) {
        message_.set(std::nullopt);
        return;
    }
    if (auto failure = LaunchAtLogin::set(item_, on)) {
        message_.set(std::move(failure));
        isOn_.set(isReallyOn());
        return;
    }
    const bool needsApproval = on && item_.status() == Status::requiresApproval;
    message_.set(needsApproval ? std::optional<std::string>(approvalText) : std::nullopt);
    if (needsApproval && onApprovalNeeded) {
        onApprovalNeeded();
    }
}

} // namespace tarnwick
