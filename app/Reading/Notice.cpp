#include "app/Reading/Notice.h"

#include "app/Reading/Measurements.h"

#include <algorithm>

namespace tarnwick {

namespace {

std::optional<Notice> pingNotice(const Measurements& measured) {
    const std::optional<PingError>& error = measured.startError;
    if (!error || error->kind != PingError::Kind::socket) {
        return std::nullopt;
    }
    if (measured.pingPermissionCommand) {
        return Notice{
            .kind = Notice::Kind::mayNotPing,
            .text = measured.allowingFailed
                        ? "This user may not ping yet, and the desktop did not allow it. Allow it with:"
                        : "This user may not ping yet. Allow it with:",
            .command = measured.pingPermissionCommand};
    }
    return Notice{.kind = Notice::Kind::noPingSocket, .text = error->message()};
}

std::optional<Notice> recordingNotice(const Measurements& measured) {
    switch (measured.recording) {
    case Recording::records:
        if (!measured.recordingProblem.empty()) {
            return Notice{
                .kind = Notice::Kind::notRecorded,
                .text = "The statistics are not stored: " + measured.recordingProblem + "."};
        }
        if (measured.surplusHosts > 0) {
            return Notice{
                .kind = Notice::Kind::notRecorded,
                .text = "There are too many hosts: the statistics of those pinged least ("
                        + std::to_string(measured.surplusHosts) + ") are not stored."};
        }
        return std::nullopt;
    case Recording::otherRecords:
        return Notice{
            .kind = Notice::Kind::notRecorded,
            .text = "Another Tarnwick records the statistics; this one records nothing."};
    case Recording::cannotRecord:
        break;
    }
    return Notice{
        .kind = Notice::Kind::notRecorded,
        .text = "The statistics are not stored: their folder can’t be written or locked."};
}

std::optional<Notice> unreadableNotice(const Measurements& measured) {
    if (measured.unreadableStats.empty()) {
        return std::nullopt;
    }
    return Notice{
        .kind = Notice::Kind::unreadableStats,
        .text = "The statistics could not be read, so they count anew. The old file is kept as “"
                + measured.unreadableStats + "”."};
}

std::optional<Notice> historyNotice(const Measurements& measured) {
    // Where not even the statistics are stored, that says it.
    const bool isSaid = measured.recording == Recording::cannotRecord || !measured.recordingProblem.empty();
    if (measured.historyProblem.empty() || isSaid) {
        return std::nullopt;
    }
    return Notice{.kind = Notice::Kind::noHistory, .text = measured.historyProblem};
}

} // namespace

std::string Notice::line() const {
    return command ? text + " " + *command : text;
}

Notice settingsNotice(const std::vector<std::string>& mistakes) {
    const std::size_t others = mistakes.size() - 1;
    const std::string more = others > 0 ? " (and " + std::to_string(others) + " more)" : "";
    return {.kind = Notice::Kind::settingsMistake, .text = mistakes.front() + more};
}

Notice noPanelNotice(bool isGnome) {
    return {
        .kind = Notice::Kind::noPanel,
        .text = isGnome ? "GNOME shows status items only with its extension “AppIndicator and "
                          "KStatusNotifierItem Support”. Until it is on, starting Tarnwick again opens "
                          "the drop-down."
                        : "No panel here shows status items. Until one does, starting Tarnwick again opens "
                          "the drop-down."};
}

Notice extensionNotice() {
    return {
        .kind = Notice::Kind::offersExtension,
        .text = "GNOME tells Tarnwick where its item is only with Tarnwick’s extension. It lets the "
                "drop-down always open there."};
}

Notice newVersionNotice() {
    return {.kind = Notice::Kind::newVersion, .text = "Restart to use the new version."};
}

Notice distrustNotice(const std::string& reason) {
    return {.kind = Notice::Kind::distrustedUpdates, .text = reason};
}

Notice applicationsNotice(const std::string& failure) {
    return {
        .kind = Notice::Kind::offersApplications,
        .text = failure.empty() ? "Tarnwick can be among your applications and start when you log in. Its "
                                  "folder stays where it is."
                                : "Tarnwick is not among your applications. " + failure + "."};
}

Notices noticesOf(const Measurements& measured) {
    Notices notices = measured.notices;
    for (auto& notice :
         {pingNotice(measured), recordingNotice(measured), unreadableNotice(measured),
          historyNotice(measured)}) {
        if (notice) {
            notices.push_back(*notice);
        }
    }
    std::ranges::sort(notices, {}, &Notice::kind);
    return notices;
}

} // namespace tarnwick
