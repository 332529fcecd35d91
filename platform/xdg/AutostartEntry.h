// The login item of freedesktop sessions: an entry in the folder of what starts with them.
#pragma once

#include "platform/ports/LoginItem.h"
#include "platform/xdg/DesktopEntry.h"

#include <filesystem>
#include <vector>

namespace tarnwick {

/// Reads the files each time it is asked. The user's own entry hides those of the system, which are never
/// written. An entry that says that the desktop has switched it off requires approval; one that can't start
/// here (its program is gone, it is for other desktops, it can't be read), or a user's own that starts
/// another copy of the program, counts as not registered, and enrolling mends it. Withdrawing leaves no entry
/// behind, or one that is switched off, where it holds more than was written here or would let a system's
/// entry show through. Inside a sandbox nothing is ever registered. Main thread.
class AutostartEntry final : public LoginItem {
public:
    struct Session {
        std::filesystem::path userFolder;                 ///< of settings
        std::vector<std::filesystem::path> systemFolders; ///< of settings, the most important first
        std::vector<std::string> desktops;                ///< the names of the one that runs
        bool isSandboxed = false;                         ///< then no desktop reads these folders
    };

    /// `program` is the one to start; nothing when its place is unknown.
    AutostartEntry(std::optional<std::filesystem::path> program, Session session);

    /// As the environment tells it.
    [[nodiscard]] static Session presentSession(bool isSandboxed);

    [[nodiscard]] Status status() const override;
    [[nodiscard]] std::optional<std::string> enroll() override;
    [[nodiscard]] std::optional<std::string> withdraw() override;

private:
    [[nodiscard]] std::filesystem::path userFile() const;
    /// The first of the system's entries, if it is readable.
    [[nodiscard]] std::optional<DesktopEntry> systemEntry() const;
    [[nodiscard]] Status statusOf(const DesktopEntry& entry) const;
    [[nodiscard]] bool startsHere(const DesktopEntry& entry) const;
    [[nodiscard]] bool startsAnotherCopy(const DesktopEntry& entry) const;
    [[nodiscard]] bool isForThisDesktop(const DesktopEntry& entry) const;
    void admitThisDesktop(DesktopEntry& entry) const;
    [[nodiscard]] std::optional<std::string> write(const DesktopEntry& entry) const;

    std::optional<std::filesystem::path> program_;
    Session session_;
};

} // namespace tarnwick
