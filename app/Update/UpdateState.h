// What the updater is doing.
#pragma once

#include "core/Update/ReleaseVersion.h"
#include "core/Update/UpdateDecision.h"

#include <cstdint>
#include <string>
#include <variant>

namespace tarnwick {

namespace Updating {

struct Idle {};

struct Checking {
    bool isAskedFor = false; ///< by the user
};

/// After a check that the user asked for, until it is dismissed.
struct NothingNewer {};

/// Waits for the user's choice.
struct Found {
    FoundUpdate update{};
    bool isAskedFor = false; ///< the check was
};

struct Downloading {
    FoundUpdate update{};
    std::uint64_t received = 0; ///< bytes
    bool isWatched = false;     ///< the user sees it; false for an automatic download that nobody asks for
};

/// The download is being verified and unpacked.
struct Preparing {
    FoundUpdate update{};
    bool isWatched = false;
};

/// The newer version takes the place of this one when the program ends.
struct Ready {
    ReleaseVersion version{};
    bool isWatched = false;
};

/// Of something that the user has asked for, or of the last run: until it is dismissed.
struct Failed {
    std::string text; ///< one or two sentences
};

} // namespace Updating

using UpdateState = std::variant<
    Updating::Idle, Updating::Checking, Updating::NothingNewer, Updating::Found, Updating::Downloading,
    Updating::Preparing, Updating::Ready, Updating::Failed>;

} // namespace tarnwick
