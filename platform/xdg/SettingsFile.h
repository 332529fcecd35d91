// The user's settings as a JSON object in a file. Registered defaults lie below it, values for one run above.
#pragma once

#include "core/RunLoop.h"
#include "core/Storage/FileStore.h"
#include "platform/ports/StoredSetting.h"
#include "platform/ports/UserDefaults.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tarnwick {

struct JsonMistake;

/// Unknown keys are kept. At the start, of a file that is no JSON object all counts that can be read. It
/// gets a second name before it is overwritten. Nothing is written until a setting changes. The changes of a
/// slider that moves are written together, once it rests, without waiting for the disk; `flush` waits.
class SettingsFile final : public UserDefaults {
public:
    /// Seconds from the latest change to its write.
    static constexpr double writeDelay = 0.5;
    /// Seconds from a write that failed to the next one.
    static constexpr double retryDelay = 10;

    /// `loop` outlives it. The values `forThisRun` lie above the stored ones and are never written; storing
    /// or removing a key ends its value.
    SettingsFile(RunLoop& loop, std::filesystem::path path, Table forThisRun = {});
    /// Writes what is not written yet, without a call of `onWritten`.
    ~SettingsFile() override;

    /// "Tarnwick/settings.json" in $XDG_CONFIG_HOME, else in ~/.config.
    [[nodiscard]] static std::filesystem::path defaultPath();

    /// Takes over changes that other programs have made in the file; returns whether there are any. A text
    /// that is no JSON object, such as a half-written one, changes nothing. A missing file is an empty one.
    bool reload();

    /// False while the file is missing or half-written. Editors take it away for a moment.
    [[nodiscard]] bool isWhole() const;

    /// What is stored and not changed since.
    [[nodiscard]] std::vector<StoredSetting> stored() const;

    /// Why the file could not be read when it was last looked at, and what became of it: "line 2: ...".
    /// Empty: it could.
    [[nodiscard]] const std::string& mistake() const { return mistake_; }

    /// The same of a file that was overwritten here, with the name under which it is kept.
    [[nodiscard]] const std::string& keptAside() const { return keptAside_; }

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

    void registerDefaults(const Table& defaults) override;
    [[nodiscard]] std::optional<bool> boolean(const std::string& key) const override;
    [[nodiscard]] std::optional<double> number(const std::string& key) const override;
    [[nodiscard]] std::optional<std::string> text(const std::string& key) const override;
    void set(const std::string& key, const Value& value) override;
    void remove(const std::string& key) override;
    void flush() override;

    /// Called after each write of the file.
    std::function<void()> onWritten;

private:
    struct Stored;

    template<class T>
    [[nodiscard]] std::optional<T> find(const std::string& key) const;
    [[nodiscard]] bool isMissing() const;
    void changed();
    void store(FileStore::Durability durability);
    void write(FileStore::Durability durability);
    /// Before it is overwritten. False when that failed.
    bool keepAside(const JsonMistake& mistake);

    RunLoop& loop_;
    std::filesystem::path path_;
    /// The file's text, if all of it has been taken over; it tells changes of other programs from our own.
    std::optional<std::string> knownText_;
    Table registered_;
    Table forThisRun_;
    std::unique_ptr<Stored> stored_;
    std::string mistake_;
    std::string keptAside_;
    bool isFlushed_ = true;      ///< what was written here
    RunLoop::Handle writeTimer_; ///< from the latest change to its write
    RunLoop::Handle retryTimer_; ///< after a write that failed
};

} // namespace tarnwick
