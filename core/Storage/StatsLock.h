// Whoever holds this lock beside the statistics file is its one writer.
#pragma once

#include "core/FileDescriptor.h"

#include <filesystem>

namespace tarnwick {

/// An advisory lock on "NAME.lock" beside the file. It goes with its process, however that ends; the lock
/// file stays, because removing it would let two processes lock two different files of that name.
class StatsLock {
public:
    enum class Attempt {
        taken,       ///< this process writes from now on
        held,        ///< this process writes, as before
        heldByOther, ///< another one does
        impossible,  ///< no lock can be had there: the folder can't be written, or its file system knows no
                     ///< locks
    };

    explicit StatsLock(std::filesystem::path file);

    /// Takes the lock unless it is held already. Never waits.
    Attempt acquire();

private:
    [[nodiscard]] FileDescriptor openFile() const;
    [[nodiscard]] bool isStillTheNamedFile() const;

    std::filesystem::path path_;
    FileDescriptor file_;
};

} // namespace tarnwick
