// The lock beside a file: the process that holds it is the only writer.
#pragma once

#include "core/FileDescriptor.h"

#include <filesystem>

namespace tarnwick {

/// An advisory lock on "NAME.lock", or where its file system has no locks, one that holds on this machine.
/// The system releases it when the process ends, however that happens. The lock file stays: after its removal
/// two processes could lock two different files of the same name.
class WriterLock {
public:
    enum class Attempt {
        taken,       ///< this process is the writer now
        held,        ///< this process is the writer already
        heldByOther, ///< another process is
        impossible,  ///< the folder is not writable
    };

    /// Whom the lock file is for. One for everybody may be locked by its user also where root has made it.
    enum class Access { everybody, userAlone };

    explicit WriterLock(std::filesystem::path file, Access access = Access::everybody);

    /// Takes the lock if it is free. Never waits.
    Attempt acquire();

private:
    [[nodiscard]] FileDescriptor openFile() const;

    std::filesystem::path path_;
    Access access_;
    FileDescriptor file_;
    FileDescriptor systemName_; ///< open only where the file system has no locks
};

} // namespace tarnwick
