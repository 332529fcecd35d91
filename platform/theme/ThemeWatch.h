// Follows what a desktop's themes say.
#pragma once

#include "core/RunLoop.h"
#include "platform/linux/FileWatch.h"
#include "platform/theme/ThemeFolders.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tarnwick {

/// Watches files only while there is a reader. Main thread.
class ThemeWatch {
public:
    /// The loop outlives it.
    ThemeWatch(RunLoop& loop, ThemeFolders folders);

    /// Reads at once, without a call of `onChange`, and again whenever one of the files changes. Null:
    /// nothing is known from then on.
    void follow(ThemeReader reader);

    [[nodiscard]] std::optional<bool> isDark() const { return reading_.isDark; }

    /// Called after the result of `isDark` has changed.
    std::function<void()> onChange;

private:
    void read();
    void filesChanged();

    RunLoop& loop_;
    ThemeFolders folders_;
    ThemeReader reader_ = nullptr;
    ThemeReading reading_;
    std::vector<std::unique_ptr<FileWatch>> watches_; ///< one for each file of the reading
};

} // namespace tarnwick
