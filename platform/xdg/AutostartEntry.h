// The login item of freedesktop sessions: an entry in the folder of programs that start with the session.
#pragma once

#include "platform/ports/LoginItem.h"
#include "platform/xdg/DesktopEntry.h"

#include <filesystem>
#include <vector>

namespace tarnwick {

/// Reads the files at each call. The user's own entry hides those of the system, which are never written.
///
/// An entry that the desktop has switched off requires approval. An entry counts as not registered if it
/// can't start the program here (the program is gone, the entry is for other desktops, or can't be read), or
/// if it is the user's own and starts another copy of the program. Enrolling repairs each of these. It leaves
/// a command line of the user's own, and its TryExec, alone if they work. Withdrawing removes the user's
/// entry, or hides it if other programs have added lines, or if a system's entry would take its place. Not
/// for sandboxes, whose folders no desktop reads. Main thread.
class AutostartEntry final : public LoginItem {
public:
    /// The option that tells the program that the session has started it.
    static constexpr auto fromSession = "--from-session";

    struct Session {
        std::filesystem::path userFolder;                 ///< of settings
        std::vector<std::filesystem::path> systemFolders; ///< of settings, the most important first
        std::vector<std::string> desktops;                ///< names of the running desktop
    };

    /// `program` is the one to start; nothing when its path is unknown.
    AutostartEntry(std::optional<std::filesystem::path> program, Session session);

    /// The session that the environment variables describe.
    [[nodiscard]] static Session presentSession();

    [[nodiscard]] Status status() const override;
    [[nodiscard]] std::optional<std::string> enroll() override;
    [[nodiscard]] std::optional<std::string> withdraw() override;

    /// Once the program was moved here from `former`: the user's entry, if it is for the program there,
    /// starts the one here. Its switches stay. Nothing on success, else the reason for the user.
    [[nodiscard]] std::optional<std::string> follow(const std::filesystem::path& former) const;

private:
    [[nodiscard]] std::filesystem::path userFile() const;
    /// The most important of the system's entries; nothing if it can't be read.
    [[nodiscard]] std::optional<DesktopEntry> systemEntry() const;
    [[nodiscard]] Status statusOf(const DesktopEntry& entry) const;
    [[nodiscard]] bool startsHere(const DesktopEntry& entry) const;
    [[nodiscard]] bool startsAnotherCopy(const DesktopEntry& entry) const;
    [[nodiscard]] bool hasWorkingCommand(const DesktopEntry& entry) const;
    [[nodiscard]] bool isForThisDesktop(const DesktopEntry& entry) const;
    [[nodiscard]] std::optional<std::string> write(const DesktopEntry& entry) const;

    std::optional<std::filesystem::path> program_;
    Session session_;
};

} // namespace tarnwick
