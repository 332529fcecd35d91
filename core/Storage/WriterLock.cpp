#include "core/Storage/WriterLock.h"

#include "core/Storage/FileStore.h"
#include "core/Storage/NamedFile.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <iterator>
#include <string>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <utility>

namespace tarnwick {

namespace {

using Attempt = WriterLock::Attempt;

/// For a file system without locks: a socket's name outside the file system, which the system gives to one
/// process of this machine at a time.
Attempt takeSystemName(int lockFile, FileDescriptor& socket) {
    struct stat info{};

    socket = FileDescriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!socket.isOpen() || ::fstat(lockFile, &info) != 0) {
        return Attempt::impossible;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = "tarnwick " + std::to_string(info.st_dev) + " " + std::to_string(info.st_ino);
    // The first byte stays zero: the name is in no folder.
    std::ranges::copy(name, std::begin(address.sun_path) + 1);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): so the call takes addresses of every kind
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), size) == 0) {
        return Attempt::taken;
    }
    return errno == EADDRINUSE ? Attempt::heldByOther : Attempt::impossible;
}

} // namespace

WriterLock::WriterLock(std::filesystem::path file, Access access) : path_(std::move(file)), access_(access) {
    path_ += ".lock";
}

WriterLock::Attempt WriterLock::acquire() {
    // The lock file may have been removed: then another process can lock a new one.
    if (file_.isOpen() && isNamed(file_.get(), path_)) {
        return Attempt::held;
    }
    file_.reset();
    systemName_.reset();
    FileDescriptor candidate = openFile();
    if (!candidate.isOpen()) {
        return Attempt::impossible;
    }
    Attempt attempt = Attempt::taken;
    if (::flock(candidate.get(), LOCK_EX | LOCK_NB) != 0) {
        attempt = errno == EWOULDBLOCK ? Attempt::heldByOther : takeSystemName(candidate.get(), systemName_);
    }
    if (attempt == Attempt::taken) {
        file_ = std::move(candidate);
    }
    return attempt;
}

FileDescriptor WriterLock::openFile() const {
    static_cast<void>(FileStore::makeFolders(path_.parent_path())); // opening tells whether it is there
    const bool isPrivate = access_ == Access::userAlone;
    FileDescriptor file(::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, isPrivate ? 0600 : 0666));
    if (!file.isOpen() && errno == EACCES) {
        // The file of another user, perhaps root: a lock needs no write permission.
        file = FileDescriptor(::open(path_.c_str(), O_RDONLY | O_CLOEXEC));
    }
    if (isPrivate && file.isOpen()) {
        static_cast<void>(::fchmod(file.get(), 0600)); // one of before; not every file system has them
    }
    return file;
}

} // namespace tarnwick
