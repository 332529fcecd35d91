// The user's settings as a JSON object in a file. Registered defaults lie below it, values for one run above.
#pragma once

#include "core/RunLoop.h"
#include "platform/ports/UserDefaults.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace tarnwick {

/// Unknown keys are kept. A file that is no JSON object counts as empty, and gets a second name before it is
/// overwritten. Nothing is written until a setting changes. Writing waits for the disk, so all changes of a
/// short time are written together.
class SettingsFile final : public UserDefaults {
public:
    /// Seconds from the first unwritten change to the next write.
    static constexpr double writeDelay = 0.2;
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
    /// that is no JSON object, such as a half-written one, changes nothing.
    bool reload();

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
    void changed();
    void write();

    RunLoop& loop_;
    std::filesystem::path path_;
    /// The file's text, if all of it has been taken over; it tells changes of other programs from our own.
    std::optional<std::string> knownText_;
    Table registered_;
    Table forThisRun_;
    std::unique_ptr<Stored> stored_;
    RunLoop::Handle writeTimer_; ///< from the first unwritten change to the write
    RunLoop::Handle retryTimer_; ///< after a write that failed
};

} // namespace tarnwick
