// What the user should know or do, beside the figures.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

struct Measurements;

struct Notice {
    /// One of each kind at most. They are shown in this order, the most important first.
    enum class Kind {
        mayNotPing,         ///< this user may not open ping sockets
        noPingSocket,       ///< a ping socket can't be opened for another reason
        settingsMistake,    ///< the settings file has a mistake
        noPanel,            ///< no panel shows the status item
        notRecorded,        ///< this process does not store the statistics
        unreadableStats,    ///< a statistics file that could not be read was kept aside
        noHistory,          ///< the history is not stored, or began anew
        distrustedUpdates,  ///< what came as news of updates is not trusted
        newVersion,         ///< the program's file is newer than what runs
        offersExtension,    ///< the desktop's shell could do more with an extension of ours
        offersApplications, ///< the program was unpacked and is not in the menu of applications
    };

    Kind kind;
    std::string text{};                                ///< one line; ends in a colon before a command
    std::optional<std::string> command = std::nullopt; ///< for a shell; front ends offer to copy it

    /// Text and command.
    [[nodiscard]] std::string line() const;

    friend bool operator==(const Notice&, const Notice&) = default;
};

using Notices = std::vector<Notice>;

/// For one or more mistakes in the settings file, each in one line.
[[nodiscard]] Notice settingsNotice(const std::vector<std::string>& mistakes);

[[nodiscard]] Notice extensionNotice();

[[nodiscard]] Notice newVersionNotice();

/// `reason` is a sentence.
[[nodiscard]] Notice distrustNotice(const std::string& reason);

/// With the reason why the latest attempt failed, if there was one.
[[nodiscard]] Notice applicationsNotice(const std::string& failure = "");

/// GNOME can show status items, but does so only with an extension.
[[nodiscard]] Notice noPanelNotice(bool isGnome);

/// Those that follow from what was measured, and those that the rest of the program has set.
[[nodiscard]] Notices noticesOf(const Measurements& measured);

} // namespace tarnwick
