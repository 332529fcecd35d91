// One download: fetches an archive with its signature to the place where it is made ready.
#pragma once

#include "app/Update/UpdateWork.h"
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
class ArchiveDownload final : public RunLoop::Registration {
public:
    struct Needs {
        Downloader& downloader;
        UpdatePlace& place;
        std::string userAgent;
        std::vector<Minisign::PublicKey> keys;
    };

    using Tell = std::function<void(const UpdateWork::News&)>;

    /// Calls nothing inside this call; the last call of `tell` may destroy it. The needs outlive it.
    ArchiveDownload(Needs needs, FoundUpdate update, Tell tell);

private:
    void fetchSignature();
    void fetchArchive();
    [[nodiscard]] bool keep(std::string_view part);
    void prepare();
    void end(const UpdateWork::Ended& ended);

    Needs needs_;
    FoundUpdate update_;
    Tell tell_; ///< empty after the end
    std::string signature_;
    std::uint64_t received_ = 0;
    RunLoop::Handle transfer_;
    Lifeline lifeline_;
};

} // namespace tarnwick
