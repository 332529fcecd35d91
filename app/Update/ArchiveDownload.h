// One download: fetches an archive with its signature to the place where it is made ready.
#pragma once

#include "core/Lifeline.h"
#include "core/Update/UpdateDecision.h"
#include "platform/ports/Downloader.h"
#include "platform/ports/UpdatePlace.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tarnwick {

/// Destroying it breaks the download off; what there is of it stays. Main thread.
class ArchiveDownload {
public:
    struct Needs {
        Downloader& downloader;
        UpdatePlace& place;
        std::string userAgent;
        std::vector<Minisign::PublicKey> keys;
    };

    struct Watcher {
        std::function<void(std::uint64_t bytes)> received; ///< so far
        std::function<void()> complete;                    ///< it is being verified and unpacked now
        /// Called once; it may destroy the download.
        std::function<void(const UpdatePlace::Problem&)> ended;
    };

    /// Calls nothing inside this call. The needs outlive it.
    ArchiveDownload(Needs needs, FoundUpdate update, Watcher watcher);

private:
    void fetchSignature();
    void fetchArchive();
    [[nodiscard]] bool keep(std::string_view part);
    void prepare();
    void end(const UpdatePlace::Problem& problem);

    Needs needs_;
    FoundUpdate update_;
    Watcher watcher_;
    std::string signature_;
    std::uint64_t received_ = 0;
    RunLoop::Handle transfer_;
    Lifeline lifeline_;
};

} // namespace tarnwick
