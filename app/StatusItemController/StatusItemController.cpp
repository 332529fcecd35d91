#include "app/StatusItemController/StatusItemController.h"

#include "app/Reading/Format.h"
#include "core/MenuBarTitle.h"
#include "core/PauseLength.h"

#include <algorithm>
#include <utility>

namespace tarnwick {

namespace {

using Id = MenuItem::Id;

constexpr auto resetWaitsNote =
    "Another Tarnwick records the statistics. They are reset when it has ended and this one records.";

MenuItem item(Id id, const char* title, char mnemonic, const char* iconName, char shortcut = 0) {
    return {.id = id, .title = title, .mnemonic = mnemonic, .shortcut = shortcut, .iconName = iconName};
}

} // namespace

StatusItemController::StatusItemController(Needs needs) : needs_(std::move(needs)) {
    needs_.menu.onRefresh = [this] { refreshMenu(); };
    needs_.menu.onWillOpen = [this] { menuWillOpen(); };
    needs_.menu.onDidClose = [this] { menuDidClose(); };
    needs_.menu.onChoose = [this](MenuItem::Id id) { chosen(id); };
    needs_.item.onActivate = [this](std::optional<ScreenPoint> at) { needs_.windows.toggleDropDown(at); };
    renderLoop_ = std::make_unique<RenderLoop>(needs_.loop, [this] { update(); });
}

StatusItemController::~StatusItemController() {
    needs_.item.onActivate = nullptr;
    needs_.menu.onRefresh = nullptr;
    needs_.menu.onWillOpen = nullptr;
    needs_.menu.onDidClose = nullptr;
    needs_.menu.onChoose = nullptr;
}

Menu::Items StatusItemController::menuItems(bool offersUpdates) {
    const MenuItem separator{.id = Id::separator};
    MenuItem changeHost = item(Id::changeHost, "Change Host…", 'H', "network-wired-symbolic");
    changeHost.hidden = true;
    MenuItem resetAllTime = item(Id::resetAllTime, "Reset All Time Stats…", 'R', "view-refresh-symbolic");
    resetAllTime.isAlternate = true;
    MenuItem resume = item(Id::resume, "Resume", 'e', "media-playback-start-symbolic");
    resume.hidden = true;
    Menu::Items items{
        {.id = Id::header},
        changeHost,
        separator,
        item(Id::resetSession, "Reset Session Stats", 'R', "view-refresh-symbolic"),
        resetAllTime,
        item(Id::pause, "Pause for an Hour", 'P', "media-playback-pause-symbolic"),
        resume,
        separator,
        item(Id::outages, "Outages…", 'O', "document-open-recent-symbolic"),
        item(Id::checkForUpdates, "Check for Updates…", 'U', "software-update-available-symbolic"),
        item(Id::settings, "Settings…", 'S', "preferences-system-symbolic", ','),
        item(Id::about, "About Tarnwick", 'A', "help-about-symbolic"),
        separator,
        item(Id::quit, "Quit Tarnwick", 'Q', "application-exit-symbolic", 'q'),
    };
    if (!offersUpdates) {
        std::erase_if(items, [](const MenuItem& each) { return each.id == Id::checkForUpdates; });
    }
    return items;
}

void StatusItemController::update() {
    const Reading& reading = needs_.monitor.reading();
    ItemState state{
        .face = face(reading),
        .form = needs_.monitor.prefs().panelForm(),
        .ink = needs_.monitor.prefs().panelInk(),
        .toolTip = reading.itemToolTip(),
        .accessibilityValue = reading.accessibilitySummary,
    };
    if (state != shown_) {
        needs_.item.show(state);
        shown_ = std::move(state);
    }
}

StatusFace StatusItemController::face(const Reading& reading) {
    const Preferences::Display display = needs_.monitor.prefs().display();
    StatusFace face{.isDown = reading.isDown(), .icon = StatusFace::Icon::none};
    if (display != Preferences::Display::textOnly) {
        face.icon = reading.isDown() ? StatusFace::Icon::failed : StatusFace::Icon::bars;
        face.activeBars = reading.bars;
    }
    if (display != Preferences::Display::iconOnly) {
        addTitle(face, reading);
    }
    return face;
}

void StatusItemController::addTitle(StatusFace& face, const Reading& reading) {
    const std::optional<int> lossDigits = updateLossGates(reading);
    // The title's width must not change below an open menu.
    if (!isMenuOpen_) {
        appliedLossDigits_ = lossDigits;
    }
    face.title = reading.menuTitle(appliedLossDigits_.has_value());
    face.figure = reading.figure();
    const MeasuredText& widest = widestTitle(appliedLossDigits_);
    face.widestTitle = widest.text;
    if (face.title != title_.text) {
        title_ = measured(*face.title);
    }
    face.textSlot = std::max(title_.width, widest.width);
}

std::optional<int> StatusItemController::updateLossGates(const Reading& reading) {
    const std::optional<int> digits =
        gates_.update(reading.knownLoss(), reading.lossTextMode, needs_.loop.now());
    lossGateRecheck_.reset();
    if (gates_.isHolding()) {
        lossGateRecheck_ = needs_.loop.after(LossGates::recheckAfter, [this] { update(); });
    }
    return digits;
}

StatusItemController::MeasuredText StatusItemController::measured(const std::string& text) const {
    return {text, needs_.textWidth(text)};
}

const StatusItemController::MeasuredText& StatusItemController::widestTitle(std::optional<int> lossDigits) {
    if (!widest_ || widestLossDigits_ != lossDigits) {
        MeasuredText widest;
        for (const std::string& candidate : MenuBarTitle::widestCandidates(lossDigits)) {
            if (MeasuredText title = measured(candidate); title.width > widest.width) {
                widest = std::move(title);
            }
        }
        widest_ = std::move(widest);
        widestLossDigits_ = lossDigits;
    }
    return *widest_;
}

void StatusItemController::menuWillOpen() {
    isMenuOpen_ = true;
    menuLoop_ = std::make_unique<RenderLoop>(needs_.loop, [this] { refreshMenu(); });
}

void StatusItemController::menuDidClose() {
    isMenuOpen_ = false;
    menuLoop_.reset();
    update();
}

void StatusItemController::refreshMenu() {
    if (needs_.updates != nullptr) {
        needs_.menu.setEnabled(Id::checkForUpdates, needs_.updates->canCheckForUpdates());
    }
    const Reading& reading = needs_.monitor.reading();
    needs_.menu.setHidden(Id::changeHost, !reading.isDown());
    needs_.menu.setHidden(Id::pause, reading.isPaused());
    needs_.menu.setHidden(Id::resume, !reading.isPaused());
}

void StatusItemController::chosen(MenuItem::Id id) {
    switch (id) {
    case Id::header:
    case Id::separator:
        break;
    case Id::outages:
        needs_.windows.showOutages();
        break;
    case Id::changeHost: // the host's field is in the settings
    case Id::settings:
        needs_.windows.showSettings();
        break;
    case Id::resetSession:
        needs_.monitor.resetSessionStats();
        break;
    case Id::resetAllTime:
        resetAllTimeSelected();
        break;
    case Id::pause:
        needs_.monitor.pause(PauseLength::usual);
        break;
    case Id::resume:
        needs_.monitor.resume();
        break;
    case Id::checkForUpdates:
        if (needs_.updates != nullptr) {
            needs_.windows.expectWindow();
            needs_.updates->checkForUpdates();
        }
        break;
    case Id::about:
        needs_.windows.showAbout();
        break;
    case Id::quit:
        needs_.windows.quit();
        break;
    }
}

void StatusItemController::resetAllTimeSelected() {
    const std::string host = needs_.monitor.prefs().hostname();
    const Question question{
        .title = "Reset All Time Stats",
        .text = "Are you sure you want to reset the all time stats for " + Format::elided(host) + "?",
        .note = needs_.monitor.reading().recording == Recording::otherRecords ? resetWaitsNote : "",
        .confirm = "Reset",
        .cancel = "Cancel",
    };
    const auto answered = [this, host](bool confirmed) {
        // The question named one host: the figures of another one stay.
        if (confirmed && needs_.monitor.prefs().hostname() == host) {
            needs_.monitor.resetAllTimeStats();
        }
    };
    needs_.windows.ask(question, lifeline_.guarded(answered));
}

} // namespace tarnwick
