// Notices that the program's file is a newer one than what runs.
#pragma once

#include "core/RunLoop.h"
#include "platform/linux/FileWatch.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <sys/types.h>

namespace tarnwick {

/// Main thread.
class ProgramReplacement {
public:
    /// `onReplaced` is called once, and not where the system does not tell the program's path. `self` is the
    /// kernel's link to the running program. The loop outlives this.
    ProgramReplacement(
        RunLoop& loop, std::function<void()> onReplaced,
        const std::filesystem::path& self = "/proc/self/exe");

private:
    struct Identity {
        dev_t device;
        ino_t node;

        friend bool operator==(const Identity&, const Identity&) = default;
    };

    [[nodiscard]] static std::optional<Identity> identityOf(const std::filesystem::path& file);
    void look();

    std::function<void()> onReplaced_;
    std::optional<Identity> running_;
    std::filesystem::path program_;
    std::optional<FileWatch> watch_;
    std::optional<FileWatch> bundleWatch_; ///< which is replaced as a whole
    RunLoop::Handle firstLook_;            ///< it may have been replaced while it started
};

} // namespace tarnwick
