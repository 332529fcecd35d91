// A newer version that is ready to take the bundle's place.
#pragma once

#include "core/Storage/WriterLock.h"
#include "platform/bundle/UpdateFolder.h"

#include <optional>
#include <string>

namespace tarnwick {

/// Its record, when it is unpacked as a whole and made for the version in the bundle's place.
[[nodiscard]] std::optional<UpdateRecord> preparedIn(const UpdateFolder& folder);

/// Owned by `main`. A problem is a sentence for users. Main thread.
class PreparedUpdate {
public:
    using Problem = std::optional<std::string>;

    explicit PreparedUpdate(UpdateFolder folder) : folder_(std::move(folder)) {}

    [[nodiscard]] const UpdateFolder& folder() const { return folder_; }

    /// Keeps other processes from it, until the exchange or the end of this process. A problem where nothing
    /// is ready, or where another process has it.
    [[nodiscard]] Problem hold();

    [[nodiscard]] bool isHeld() const { return lock_.has_value(); }

    /// Holds it, if that was not done before, and puts it in the bundle's place; the old version waits beside
    /// it. After a problem the old version is in its place, and what was ready is gone. Nothing is held
    /// afterwards.
    [[nodiscard]] Problem exchange();

    /// Removes what was downloaded or made ready, unless another process has it.
    void discard();

private:
    [[nodiscard]] Problem exchanged() const;

    UpdateFolder folder_;
    std::optional<WriterLock> lock_;
};

} // namespace tarnwick
