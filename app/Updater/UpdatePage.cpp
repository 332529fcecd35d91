#include "app/Updater/UpdatePage.h"

namespace tarnwick {

namespace {

using Action = UpdatePage::Action;

/// One function for each state.
struct PageMaker {
    const ReleaseVersion& running;

    std::optional<UpdatePage> operator()(const Updating::Idle& /*idle*/) const { return std::nullopt; }

    std::optional<UpdatePage> operator()(const Updating::Checking& checking) const {
        if (!checking.isAskedFor) {
            return std::nullopt;
        }
        return UpdatePage{
            .title = "Checking for updates…",
            .text = "",
            .progress = UpdatePage::Progress{},
            .buttons = {{"&Cancel", Action::cancel}},
            .whenClosed = Action::cancel};
    }

    std::optional<UpdatePage> operator()(const Updating::NothingNewer& /*state*/) const {
        return UpdatePage{
            .title = "Tarnwick is up to date",
            .text = "Version " + running.text() + " is the newest one.",
            .buttons = {{"&OK", Action::dismiss}},
            .isAlert = true};
    }

    std::optional<UpdatePage> operator()(const Updating::Found& found) const {
        const Release& release = found.update.release;
        return UpdatePage{
            .title = "A new version of Tarnwick is available",
            .text = "Version " + release.version.text() + " can be installed now. You have version "
                    + running.text() + ".",
            .notes = release.notes,
            .buttons =
                {{"&Skip This Version", Action::skip},
                 {"Remind Me &Later", Action::remindLater},
                 {"&Install", Action::install}},
            .whenClosed = Action::remindLater};
    }

    std::optional<UpdatePage> operator()(const Updating::Downloading& state) const {
        if (!state.isWatched) {
            return std::nullopt;
        }
        return UpdatePage{
            .title = "Downloading Tarnwick " + state.update.release.version.text(),
            .text = "",
            .progress = UpdatePage::Progress{.done = state.received, .whole = state.update.archive.size},
            .buttons = {{"&Cancel", Action::cancel}},
            .whenClosed = Action::cancel};
    }

    std::optional<UpdatePage> operator()(const Updating::Preparing& state) const {
        if (!state.isWatched) {
            return std::nullopt;
        }
        return UpdatePage{
            .title = "Preparing Tarnwick " + state.update.release.version.text(),
            .text = "The download is being verified and unpacked.",
            .progress = UpdatePage::Progress{},
            .buttons = {{"&Cancel", Action::cancel}},
            .whenClosed = Action::cancel};
    }

    std::optional<UpdatePage> operator()(const Updating::Ready& ready) const {
        if (!ready.isWatched) {
            return std::nullopt;
        }
        return UpdatePage{
            .title = "Tarnwick " + ready.version.text() + " is ready",
            .text = "It takes the place of version " + running.text() + " when Tarnwick restarts.",
            .buttons = {{"&Later", Action::dismiss}, {"&Restart Now", Action::restart}}};
    }

    std::optional<UpdatePage> operator()(const Updating::Failed& failed) const {
        return UpdatePage{
            .title = "Tarnwick was not updated",
            .text = failed.text,
            .buttons = {{"&OK", Action::dismiss}},
            .isAlert = true};
    }
};

} // namespace

std::optional<UpdatePage> pageOf(const UpdateState& state, const ReleaseVersion& running) {
    return std::visit(PageMaker{running}, state);
}

} // namespace tarnwick
