// Fetches files over HTTPS with the toolkit's network library.
#pragma once

#include "platform/ports/Downloader.h"

namespace tarnwick {

/// Seconds without anything new after which a transfer ends as silent.
struct HttpsPatience {
    double answer =
        30; ///< until a server's first answer, with all that comes before it; for each redirect anew
    double silence = 30; ///< between two parts of a file
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
