#include "platform/linux/ProgramReplacement.h"

#include "platform/linux/OwnBundle.h"
#include "platform/linux/RunningProgram.h"

#include <sys/stat.h>
#include <utility>

namespace tarnwick {

ProgramReplacement::ProgramReplacement(
    RunLoop& loop, std::function<void()> onReplaced, const std::filesystem::path& self)
    : onReplaced_(std::move(onReplaced)), running_(identityOf(self)) {
    const auto program = runningProgram(self);
    if (!running_ || !program) {
        return;
    }
    program_ = *program;
    watch_.emplace(loop, program_, [this] { look(); });
    if (const auto bundle = ownBundle(program_)) {
        bundleWatch_.emplace(loop, *bundle, [this] { look(); });
    }
    firstLook_ = loop.after(0, [this] { look(); });
}

std::optional<ProgramReplacement::Identity> ProgramReplacement::identityOf(
    const std::filesystem::path& file) {
    struct stat status{};
    if (::stat(file.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return Identity{.device = status.st_dev, .node = status.st_ino};
}

void ProgramReplacement::look() {
    const std::optional<Identity> present = identityOf(program_);
    // Between the old file and the new one there may be none.
    if (!present || present == running_) {
        return;
    }
    watch_.reset();
    bundleWatch_.reset();
    std::exchange(onReplaced_, nullptr)();
}

} // namespace tarnwick
