// The way out of this machine as the Linux kernel tells it.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/ports/LinkInspector.h"

#include <functional>
#include <memory>
#include <optional>

namespace tarnwick {

/// Reads on a detached thread: just when a connection is bad, a driver may be bringing an interface up, and
/// the kernel lets such questions wait for it.
class KernelLinkInspector final : public LinkInspector {
public:
    /// Never called by two threads at a time.
    using Read = std::function<std::optional<LinkState>(const std::optional<ResolvedAddress>& to)>;

    /// That of a `LinkReader`.
    [[nodiscard]] static Read systemRead();

    explicit KernelLinkInspector(RunLoop& loop, Read read = systemRead());

    void inspect(const std::optional<ResolvedAddress>& to, Answer answer) override;

private:
    struct Question {
        std::optional<ResolvedAddress> to;
        Answer answer;
    };

    void ask(Question question);
    void finish(const Answer& answer, const std::optional<LinkState>& state);

    RunLoop& loop_;
    Read read_;
    bool isReading_ = false;
    std::optional<Question> next_; ///< waits until that is read
    Lifeline lifeline_;
};

} // namespace tarnwick
