// Whether a feed has an update for this program on this machine.
#pragma once

#include "core/RunLoop.h"
#include "core/Update/Feed.h"

#include <chrono>
#include <optional>
#include <string>
#include <variant>

namespace tarnwick {

struct UpdateCircumstances {
    ReleaseVersion running{};
    std::string machine{};   ///< as the system calls it
    ReleaseVersion system{}; ///< the kernel's major and minor number
    std::string channel{};
    /// When the last feed that was trusted was signed.
    std::optional<std::chrono::sys_seconds> lastSeen{};
    std::optional<ReleaseVersion> skipped{};    ///< by the user
    std::optional<ReleaseVersion> rolledBack{}; ///< it failed to run here
    bool isAskedFor = false;                    ///< the user's own check, not a scheduled one
    RunLoop::WallTime now{};
};

struct UpToDate {};

struct FoundUpdate {
    Release release{};
    ReleaseArchive archive{}; ///< the one for this machine
};

struct RefusedUpdate {
    enum class Reason {
        signedInFuture, ///< later than the clock can be wrong: it would hide all later feeds
        replayed,       ///< signed earlier than a trusted feed that was seen before
        stale,          ///< too old: someone may hold back later feeds
        noArchive,      ///< newer releases are for other machines
        systemTooOld,   ///< newer releases need a newer kernel
    };

    Reason reason{};
    ReleaseVersion version{}; ///< of the last two reasons: the newest of these releases
    ReleaseVersion needed{};  ///< of the last reason: the kernel that it needs
};

using UpdateDecision = std::variant<UpToDate, FoundUpdate, RefusedUpdate>;

inline constexpr auto longestFeedAge = std::chrono::days(90);
/// Clocks that run wrong by a time zone are common.
inline constexpr auto clockTolerance = std::chrono::days(1);

/// `feed` has been verified. The newest release that can run here, if it is newer than the running one. A
/// scheduled check finds neither the version that was rolled back nor one up to the skipped version. A
/// channel includes the stable one.
[[nodiscard]] UpdateDecision decideOnUpdate(const Feed& feed, const UpdateCircumstances& circumstances);

/// Whether the feed itself is trusted, whatever it has for this machine: it must be remembered as seen.
[[nodiscard]] bool isTrusted(const UpdateDecision& decision);

/// For users.
[[nodiscard]] std::string sentence(const RefusedUpdate& refused);

} // namespace tarnwick
