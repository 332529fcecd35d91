#include "platform/theme/ThemeWatch.h"

#include <utility>

namespace tarnwick {

ThemeWatch::ThemeWatch(RunLoop& loop, ThemeFolders folders) : loop_(loop), folders_(std::move(folders)) {
}

void ThemeWatch::follow(ThemeReader reader) {
    if (std::exchange(reader_, reader) == reader) {
        return;
    }
    reading_ = {};
    watches_.clear();
    if (reader_ != nullptr) {
        read();
    }
}

void ThemeWatch::read() {
    constexpr int mostReads = 10; // files may change while they are read
    for (int reads = 0; reads < mostReads; ++reads) {
        const auto before = std::exchange(reading_, reader_(folders_)).files;
        if (before == reading_.files) {
            return;
        }
        watches_.clear();
        for (const auto& file : reading_.files) {
            watches_.push_back(std::make_unique<FileWatch>(loop_, file, [this] { filesChanged(); }));
        }
        // Once more: they may have changed before they were watched.
    }
}

void ThemeWatch::filesChanged() {
    const std::optional<bool> before = reading_.isDark;
    read();
    if (before != reading_.isDark && onChange) {
        onChange();
    }
}

} // namespace tarnwick
