#include "app/Watch/LineWriter.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <unistd.h>

namespace tarnwick {

namespace {

/// A pipe that polls as writable takes this many bytes without blocking.
constexpr std::size_t takenWithoutBlocking = PIPE_BUF;

} // namespace

LineWriter::Written LineWriter::write(std::string_view line) {
    if (!rest_.empty()) {
        std::string_view rest = rest_;
        const Written written = writeSome(rest);
        rest_ = std::string(rest);
        if (written != Written::taken) {
            return written;
        }
    }
    std::string_view unwritten = line;
    const Written written = writeSome(unwritten);
    if (written == Written::leftOut && unwritten.size() < line.size()) {
        rest_ = std::string(unwritten);
        return Written::taken;
    }
    return written;
}

LineWriter::Written LineWriter::writeSome(std::string_view& text) {
    while (!text.empty()) {
        pollfd output{.fd = descriptor_, .events = POLLOUT, .revents = 0};
        if (::poll(&output, 1, 0) != 1) {
            return Written::leftOut;
        }
        // The far end of a pipe has gone, whether or not there is room in it.
        if ((output.revents & POLLERR) != 0 || (output.revents & POLLOUT) == 0) {
            return Written::closed;
        }
        const ssize_t count = ::write(descriptor_, text.data(), std::min(text.size(), takenWithoutBlocking));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0 && errno == EAGAIN) {
            return Written::leftOut;
        }
        if (count < 0) {
            error_ = {errno, std::generic_category()};
            return error_ == std::errc::broken_pipe ? Written::closed : Written::failed;
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return Written::taken;
}

} // namespace tarnwick
