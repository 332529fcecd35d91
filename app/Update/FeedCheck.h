// One check: fetches the feed with its signature, verifies it, and decides.
#pragma once

#include "core/Update/BundleInformation.h"
#include "core/Update/Feed.h"
#include "platform/ports/Downloader.h"

#include <functional>
#include <string>
#include <variant>

namespace tarnwick {

/// Destroying it breaks the check off. Main thread.
class FeedCheck {
public:
    struct Failure {
        std::string text; ///< a sentence for users
        bool hasAnswered; ///< the server has; else there may be no network
    };

    /// The maker's word.
    using Result = std::variant<Feed, Failure>;

    /// `ended` is called once, later; it may destroy the check. `downloader` outlives it.
    FeedCheck(
        Downloader& downloader, UpdateSource source, std::string userAgent,
        std::function<void(Result)> ended);

private:
    void fetch(std::string address, std::size_t limit, std::string& into, std::function<void()> then);
    void verify();
    void end(Result result);

    Downloader& downloader_;
    UpdateSource source_;
    std::string userAgent_;
    std::function<void(Result)> ended_;
    std::string feed_;
    std::string signature_;
    RunLoop::Handle transfer_;
};

} // namespace tarnwick
