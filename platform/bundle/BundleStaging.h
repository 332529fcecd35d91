// Makes a newer version of a bundle ready in the folder beside it.
#pragma once

#include "core/FileDescriptor.h"
#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "core/Storage/WriterLock.h"
#include "platform/bundle/UpdateFolder.h"
#include "platform/ports/UpdatePlace.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>

namespace tarnwick {

class BundleStaging final : public UpdatePlace {
public:
    /// `running` is the bundle's version. The loop outlives this.
    BundleStaging(RunLoop& loop, UpdateFolder folder, ReleaseVersion running);

    [[nodiscard]] Problem obstacle() const override;
    [[nodiscard]] Problem begin() override;
    [[nodiscard]] Problem add(std::string_view part) override;
    void prepare(const Claim& claim, std::function<void(const Problem&)> done) override;
    void discard() override;

private:
    /// Work off the main thread, which can't be broken off.
    struct Work {
        enum class Fate { open, abandoned, done };
        /// The one who finds the other's word here removes what was made.
        std::atomic<Fate> fate = Fate::open;
        std::atomic<bool> hasEnded = false;
    };

    RunLoop& loop_;
    UpdateFolder folder_;
    ReleaseVersion running_;
    std::optional<WriterLock> lock_; ///< from `begin` on
    FileDescriptor archive_;
    std::shared_ptr<Work> work_;
    std::unique_ptr<Lifeline> listening_; ///< while somebody waits for the work
};

} // namespace tarnwick
