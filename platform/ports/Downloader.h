// Fetches files over HTTPS.
#pragma once

#include "core/RunLoop.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick {

/// The system's proxy and certificates are used; a redirect is followed to HTTPS only. No cookies, and no
/// more of this machine is told than the user agent. Main thread.
class Downloader {
public:
    Downloader() = default;
    Downloader(const Downloader&) = delete;
    Downloader& operator=(const Downloader&) = delete;
    virtual ~Downloader() = default;

    enum class Problem {
        unreachable, ///< no network, no such name, no connection
        silent,      ///< nothing, or next to nothing, has come for too long
        untrusted,   ///< the certificate is not this server's, has expired, or is signed by nobody known
        notHttps,    ///< the address, or where it redirects to
        missing,     ///< the server has no such file
        unavailable, ///< the server can't serve it now
        unusable,    ///< the server's answer is not the file
        tooLarge,    ///< above the limit
        brokenOff,   ///< the connection ended early
    };

    struct Failure {
        Problem problem;
        std::string detail; ///< the system's words for it, in one line; may be empty
    };

    struct Request {
        std::string address;
        std::string userAgent;
        std::uint64_t sizeLimit; ///< bytes
    };

    struct Receiver {
        /// A part of the file, in order. False ends the transfer without a call of `ended`.
        std::function<bool(std::string_view part)> received;
        /// Called once, when all has been received or nothing more will be.
        std::function<void(const std::optional<Failure>& failure)> ended;
    };

    /// Calls nothing inside this call. Destroying the handle breaks the transfer off, and nothing more is
    /// called then. The handle may be destroyed in a call. It must not outlive the downloader.
    [[nodiscard]] virtual RunLoop::Handle fetch(const Request& request, Receiver receiver) = 0;
};

} // namespace tarnwick
