// The work of an update: what touches the network and the disk.
#pragma once

#include "core/RunLoop.h"
#include "core/Update/UpdateDecision.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>

namespace tarnwick {

/// A problem is a sentence for users. Nothing is called inside a call; destroying a handle breaks the work
/// off, and may be done in a call. Main thread.
class UpdateWork {
public:
    using Problem = std::optional<std::string>;

    UpdateWork() = default;
    UpdateWork(const UpdateWork&) = delete;
    UpdateWork& operator=(const UpdateWork&) = delete;
    virtual ~UpdateWork() = default;

    /// Of a feed that did come.
    enum class Distrust {
        none,
        likely,  ///< feed and signature do not match: perhaps the maker replaces them just now
        certain, ///< what came is nothing that the maker offers today
    };

    struct CheckFailure {
        std::string text; ///< a sentence for users
        bool hasAnswered; ///< the server has; else there may be no network
        Distrust distrust = Distrust::none;
    };

    /// The text of the feed: the maker's word. It has not been parsed.
    struct VerifiedFeed {
        std::string text;
    };

    using CheckResult = std::variant<VerifiedFeed, CheckFailure>;

    /// `ended` is called once.
    [[nodiscard]] virtual RunLoop::Handle check(std::function<void(const CheckResult&)> ended) = 0;

    /// Why the running version can't be replaced, before anything is downloaded.
    [[nodiscard]] virtual Problem obstacle() = 0;

    // What a download tells, in this order.

    struct Received {
        std::uint64_t bytes; ///< so far
    };

    /// It is being verified and unpacked now.
    struct Complete {};

    /// Once. Without a problem the version is ready.
    struct Ended {
        Problem problem;
        bool mayPass = false; ///< the network's problem: the same download may do better at another time
    };

    using News = std::variant<Received, Complete, Ended>;

    /// The update is one of the feed that the last check has verified, or a check before it. What there was
    /// of an earlier download is gone.
    [[nodiscard]] virtual RunLoop::Handle download(
        const FoundUpdate& update, std::function<void(const News&)> tell) = 0;

    /// Removes what was downloaded or made ready. No download may be under way.
    virtual void discard() = 0;
};

} // namespace tarnwick
