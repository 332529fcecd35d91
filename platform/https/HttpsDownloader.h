// Fetches files over HTTPS with the toolkit's network library.
#pragma once

#include "platform/ports/Downloader.h"

#include <cstdint>

namespace tarnwick {

/// Seconds after which a transfer ends as silent. A server that sends a byte now and then can't hold it up.
struct HttpsPatience {
    static constexpr std::uint64_t leastProgress = std::uint64_t{16} * 1024;

    double answer =
        30; ///< until a server's first answer, with all that comes before it; for each redirect anew
    double silence = 30; ///< for each `leastProgress` bytes of a file, or for the rest of it
};

/// Nothing of the library exists before the first fetch and after the last: each transfer has a connection
/// and a thread of the library's own. Needs the toolkit's event loop, which hosts `loop`. Main thread.
class HttpsDownloader final : public Downloader {
public:
    /// `loop` outlives it.
    explicit HttpsDownloader(RunLoop& loop, HttpsPatience patience = {});

    [[nodiscard]] RunLoop::Handle fetch(const Request& request, Receiver receiver) override;

private:
    RunLoop& loop_;
    HttpsPatience patience_;
};

} // namespace tarnwick
