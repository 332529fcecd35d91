// The user's settings as one JSON object in a file, with registered defaults below it and a volatile layer
// above.
#pragma once

#include "platform/ports/UserDefaults.h"

#include <filesystem>
#include <memory>

namespace tarnwick {

/// Keys that it does not know are kept. A file that can't be read as a JSON object counts as empty, and is
/// given a second name before it is first overwritten. Nothing is written until a setting changes.
class SettingsFile final : public UserDefaults {
public:
    explicit SettingsFile(std::filesystem::path path);
    ~SettingsFile() override;

    /// "Tarnwick/settings.json" in $XDG_CONFIG_HOME, else in ~/.config.
    [[nodiscard]] static std::filesystem::path defaultPath();

    /// Takes over what has been changed in the file since it was last read or written here. What can't be
    /// understood, as while somebody is writing it, changes nothing.
    void reload();

    /// Holds for this run, above what is stored, and is never written. Storing or removing the key ends it.
    void setVolatile(const std::string& key, const Value& value);

    void registerDefaults(const Table& defaults) override;
    [[nodiscard]] std::optional<bool> boolean(const std::string& key) const override;
    [[nodiscard]] std::optional<double> number(const std::string& key) const override;
    [[nodiscard]] std::optional<std::string> text(const std::string& key) const override;
    void set(const std::string& key, const Value& value) override;
    void remove(const std::string& key) override;
    void edit(const std::function<void()>& changes) override;

private:
    struct Stored;

    template<class T>
    [[nodiscard]] std::optional<T> find(const std::string& key) const;
    void write();

    std::filesystem::path path_;
    Table registered_;
    Table volatile_;
    std::unique_ptr<Stored> stored_;
    bool isEditing_ = false;
};

} // namespace tarnwick
