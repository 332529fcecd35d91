// The work of an update in a process of its own.
#pragma once

#include "app/Update/UpdateWork.h"
#include "platform/bundle/PreparedUpdate.h"

#include <string>

namespace tarnwick {

/// The process lives as long as one piece of work. So this program loads no library for it, and what comes
/// from the network is taken apart elsewhere. Main thread.
class UpdateProcess final : public UpdateWork {
public:
    /// Holds what a download makes ready, and outlives this.
    explicit UpdateProcess(PreparedUpdate& prepared);

    [[nodiscard]] RunLoop::Handle check(std::function<void(const CheckResult&)> ended) override;
    [[nodiscard]] Problem obstacle() override;
    [[nodiscard]] RunLoop::Handle download(
        const FoundUpdate& update, std::function<void(const News&)> tell) override;
    void discard() override;

private:
    PreparedUpdate& prepared_;
    std::string feed_; ///< that the last check has verified
};

} // namespace tarnwick
