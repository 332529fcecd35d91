#include "platform/linux/KernelLinkInspector.h"

#include "platform/linux/LinkReader.h"

#include <utility>

namespace tarnwick {

KernelLinkInspector::Read KernelLinkInspector::systemRead() {
    return [reader = std::make_shared<LinkReader>()](const std::optional<ResolvedAddress>& to) {
        return reader->present(to);
    };
}

KernelLinkInspector::KernelLinkInspector(RunLoop& loop, Read read) : loop_(loop), read_(std::move(read)) {
}

void KernelLinkInspector::inspect(const std::optional<ResolvedAddress>& to, Answer answer) {
    Question question{to, std::move(answer)};
    if (isReading_) {
        next_ = std::move(question);
    } else {
        ask(std::move(question));
    }
}

void KernelLinkInspector::ask(Question question) {
    isReading_ = true;
    const auto report =
        lifeline_.guarded([this, answer = std::move(question.answer)](const std::optional<LinkState>& state) {
            finish(answer, state);
        });
    const bool isUnderWay =
        loop_.detach([read = read_, to = std::move(question.to), report]() -> RunLoop::Task {
            return [report, state = read(to)] { report(state); };
        });
    if (!isUnderWay) {
        loop_.post([report] { report(std::nullopt); });
    }
}

void KernelLinkInspector::finish(const Answer& answer, const std::optional<LinkState>& state) {
    isReading_ = false;
    if (auto next = std::exchange(next_, std::nullopt)) {
        ask(*std::move(next));
    }
    answer(state); // which may end this object
}

} // namespace tarnwick
