#include "app/UserSettings/UserSettings.h"

#include "app/Preferences/SettingMistakes.h"

#include <utility>

namespace tarnwick {

UserSettings::UserSettings(RunLoop& loop, const std::filesystem::path& path, UserDefaults::Table forThisRun)
    : loop_(loop),
      file_(loop, path, std::move(forThisRun)),
      preferences_(file_),
      watch_(loop, path, [this] { fileChanged(); }) {
    file_.onWritten = [this] {
        watch_.forgetChanges();
        // Another program may have written it just before or just after.
        takeOverChanges();
    };
}

void UserSettings::fileChanged() {
    absence_.reset();
    if (file_.isWhole()) {
        takeOverChanges();
    } else {
        absence_ = loop_.after(longestAbsence, [this] { takeOverChanges(); });
    }
}

void UserSettings::takeOverChanges() {
    if (file_.reload()) {
        preferences_.reload();
    }
    if (onMistakes_ && told_ != mistakes()) {
        told_ = mistakes();
        onMistakes_(told_);
    }
}

void UserSettings::tellMistakes(std::function<void(const std::vector<std::string>&)> listener) {
    onMistakes_ = std::move(listener);
    takeOverChanges();
}

std::vector<std::string> UserSettings::mistakes() const {
    std::vector<std::string> texts = settingMistakes(file_.stored());
    for (const std::string& text : {file_.mistake(), file_.keptAside()}) {
        if (!text.empty()) {
            texts.insert(texts.begin(), text);
        }
    }
    for (std::string& text : texts) {
        text.insert(0, file_.path().string() + (text.starts_with("line ") ? ", " : ": "));
    }
    return texts;
}

} // namespace tarnwick
