// Where a newer version is made ready to take the place of the running one.
#pragma once

#include "core/Update/Feed.h"
#include "core/Update/Minisign.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

/// A problem is a sentence for users. Main thread.
class UpdatePlace {
public:
    using Problem = std::optional<std::string>;

    UpdatePlace() = default;
    UpdatePlace(const UpdatePlace&) = delete;
    UpdatePlace& operator=(const UpdatePlace&) = delete;
    virtual ~UpdatePlace() = default;

    /// Why the running version can't be replaced, before anything is downloaded.
    [[nodiscard]] virtual Problem obstacle() const = 0;

    /// Begins an empty download in place of all that was there.
    [[nodiscard]] virtual Problem begin() = 0;
    [[nodiscard]] virtual Problem add(std::string_view part) = 0;

    struct Claim {
        ReleaseArchive archive;
        ReleaseVersion version;
        std::string signature; ///< the text of the archive's signature file
        std::vector<Minisign::PublicKey> keys;
    };

    /// Verifies what has been downloaded, then unpacks it. `done` is called once, soon, and not when this
    /// object has ended or `discard` was called.
    virtual void prepare(const Claim& claim, std::function<void(const Problem&)> done) = 0;

    /// Removes all of it.
    virtual void discard() = 0;
};

} // namespace tarnwick
