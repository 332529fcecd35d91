#include "app/SettingsView/Model/LaunchAtLoginToggle.h"

#include "app/SettingsView/Model/LaunchAtLogin.h"

#include <utility>

namespace tarnwick {

using Status = LoginItem::Status;

LaunchAtLoginToggle::LaunchAtLoginToggle(LoginItem& item) : item_(item) {
    item.onAnswer = [this](const std::string& failure) {
        failure_.set(failure.empty() ? std::nullopt : std::optional(failure));
        follow();
    };
    refresh();
}

LaunchAtLoginToggle::~LaunchAtLoginToggle() {
    item_.onAnswer = nullptr;
}

bool LaunchAtLoginToggle::isReallyOn() const {
    return item_.status() != Status::notRegistered;
}

std::optional<std::string> LaunchAtLoginToggle::message() const {
    if (const auto& failure = failure_.get()) {
        return failure;
    }
    return needsApproval_.get() ? std::optional<std::string>(approvalText) : std::nullopt;
}

bool LaunchAtLoginToggle::leadsToApproval() const {
    return needsApproval_.get() && !failure_.get() && showApproval;
}

void LaunchAtLoginToggle::refresh() {
    failure_.set(std::nullopt);
    follow();
}

void LaunchAtLoginToggle::follow() {
    isOn_.set(isReallyOn());
    needsApproval_.set(item_.status() == Status::requiresApproval);
}

void LaunchAtLoginToggle::set(bool on) {
    isOn_.set(on);
    failure_.set(std::nullopt);
    needsApproval_.set(false);
    if (on == isReallyOn()) {
        return;
    }
    if (auto failure = LaunchAtLogin::set(item_, on)) {
        failure_.set(std::move(failure));
        isOn_.set(isReallyOn());
        return;
    }
    const bool needsApproval = on && item_.status() == Status::requiresApproval;
    needsApproval_.set(needsApproval);
    if (needsApproval && showApproval) {
        showApproval();
    }
}

} // namespace tarnwick
