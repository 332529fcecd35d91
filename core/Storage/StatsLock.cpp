#include "core/Storage/StatsLock.h"

#include "core/Storage/NamedFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <utility>

namespace tarnwick {

StatsLock::StatsLock(std::filesystem::path file) : path_(std::move(file)) {
    path_ += ".lock";
}

StatsLock::Attempt StatsLock::acquire() {
    // The lock file may have been removed: then another process can lock a new one.
    if (file_.isOpen() && isNamed(file_.get(), path_)) {
        return Attempt::held;
    }
    file_.reset();
    FileDescriptor candidate = openFile();
    if (!candidate.isOpen()) {
        return Attempt::impossible;
    }
    if (::flock(candidate.get(), LOCK_EX | LOCK_NB) != 0) {
        return errno == EWOULDBLOCK ? Attempt::heldByOther : Attempt::impossible;
    }
    file_ = std::move(candidate);
    return Attempt::taken;
}

FileDescriptor StatsLock::openFile() const {
    std::error_code error;
    std::filesystem::create_directories(path_.parent_path(), error);
    FileDescriptor file(::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    if (!file.isOpen() && errno == EACCES) {
        // The file of another user, perhaps root: a lock needs no write permission.
        file = FileDescriptor(::open(path_.c_str(), O_RDONLY | O_CLOEXEC));
    }
    return file;
}

} // namespace tarnwick
