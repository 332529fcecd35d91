// One check: fetches the feed with its signature, and verifies it.
#pragma once

#include "app/Update/UpdateWork.h"
#include "core/Update/BundleInformation.h"
#include "platform/ports/Downloader.h"

#include <functional>
#include <string>

namespace tarnwick {

/// Destroying it breaks the check off. Main thread.
class FeedCheck final : public RunLoop::Registration {
public:
    using Result = UpdateWork::CheckResult;

    /// `ended` is called once, later; it may destroy the check. `downloader` outlives it.
    FeedCheck(
        Downloader& downloader, UpdateSource source, std::string userAgent,
        std::function<void(const Result&)> ended);

private:
    void fetch(std::string address, std::size_t limit, std::string& into, std::function<void()> then);
    void verify();
    void end(const Result& result);

    Downloader& downloader_;
    UpdateSource source_;
    std::string userAgent_;
    std::function<void(const Result&)> ended_;
    std::string feed_;
    std::string signature_;
    RunLoop::Handle transfer_;
};

} // namespace tarnwick
