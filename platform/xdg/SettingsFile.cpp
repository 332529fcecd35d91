#include "platform/xdg/SettingsFile.h"

#include "core/Storage/FileStore.h"
#include "core/Storage/JsonObject.h"
#include "core/Storage/UserFolders.h"

#include <utility>

namespace tarnwick {

namespace {

using Json = nlohmann::json;

template<class T>
std::optional<T> valueAs(const Json& value) {
    if constexpr (std::is_same_v<T, bool>) {
        return value.is_boolean() ? std::optional(value.get<bool>()) : std::nullopt;
    } else if constexpr (std::is_same_v<T, double>) {
        return value.is_number() ? std::optional(value.get<double>()) : std::nullopt;
    } else {
        return value.is_string() ? std::optional(value.get<std::string>()) : std::nullopt;
    }
}

template<class T>
std::optional<T> valueIn(const UserDefaults::Table& table, const std::string& key) {
    const auto found = table.find(key);
    if (found == table.end()) {
        return std::nullopt;
    }
    const T* value = std::get_if<T>(&found->second);
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

/// What lies on disk. Nothing when the file is there but is no JSON object.
std::optional<Json> readObject(const std::filesystem::path& path) {
    std::error_code error;
    const std::optional<std::string> text = FileStore::read(path, error);
    if (error == std::errc::no_such_file_or_directory) {
        return Json::object();
    }
    return parseJsonObject(text.value_or(""));
}

} // namespace

struct SettingsFile::Stored {
    Json object = Json::object();                         ///< as last known on disk
    std::map<std::string, std::optional<Json>> unsaved{}; ///< changes that are not on disk yet; none: removed

    /// The value that holds: a change that is not on disk yet, else what lies there.
    [[nodiscard]] const Json* find(const std::string& key) const {
        if (const auto change = unsaved.find(key); change != unsaved.end()) {
            const std::optional<Json>& value = change->second;
            return value ? &*value : nullptr;
        }
        const auto found = object.find(key);
        return found != object.end() ? &*found : nullptr;
    }

    [[nodiscard]] Json withUnsaved(Json base) const {
        for (const auto& [key, value] : unsaved) {
            if (value) {
                base[key] = *value;
            } else {
                base.erase(key);
            }
        }
        return base;
    }
};

SettingsFile::SettingsFile(std::filesystem::path path)
    : path_(std::move(path)),
      stored_(std::make_unique<Stored>(Stored{.object = readObject(path_).value_or(Json::object())})) {
}

SettingsFile::~SettingsFile() = default;

std::filesystem::path SettingsFile::defaultPath() {
    return UserFolders::config() / "Tarnwick" / "settings.json";
}

void SettingsFile::reload() {
    if (auto present = readObject(path_)) {
        stored_->object = std::move(*present);
    }
}

void SettingsFile::setVolatile(const std::string& key, const Value& value) {
    volatile_[key] = value;
}

void SettingsFile::registerDefaults(const Table& defaults) {
    for (const auto& [key, value] : defaults) {
        registered_[key] = value;
    }
}

template<class T>
std::optional<T> SettingsFile::find(const std::string& key) const {
    if (const auto value = valueIn<T>(volatile_, key)) {
        return value;
    }
    const Json* stored = stored_->find(key);
    if (const auto value = stored != nullptr ? valueAs<T>(*stored) : std::nullopt) {
        return value;
    }
    return valueIn<T>(registered_, key);
}

std::optional<bool> SettingsFile::boolean(const std::string& key) const {
    return find<bool>(key);
}

std::optional<double> SettingsFile::number(const std::string& key) const {
    return find<double>(key);
}

std::optional<std::string> SettingsFile::text(const std::string& key) const {
    return find<std::string>(key);
}

void SettingsFile::set(const std::string& key, const Value& value) {
    volatile_.erase(key);
    stored_->unsaved[key] = std::visit([](const auto& held) { return Json(held); }, value);
    write();
}

void SettingsFile::remove(const std::string& key) {
    volatile_.erase(key);
    stored_->unsaved[key] = std::nullopt;
    write();
}

void SettingsFile::edit(const std::function<void()>& changes) {
    const bool isOutermost = !std::exchange(isEditing_, true);
    changes();
    if (isOutermost) {
        isEditing_ = false;
        write();
    }
}

void SettingsFile::write() {
    if (isEditing_) {
        return;
    }
    // What was changed in the file meanwhile, by hand or by another program, is kept.
    const std::optional<Json> present = readObject(path_);
    Json next = stored_->withUnsaved(present.value_or(stored_->object));
    const bool isOnDisk = present && *present == next;
    if (!isOnDisk) {
        const std::string text = next.dump(4, ' ', false, Json::error_handler_t::replace) + "\n";
        if ((!present && FileStore::keepAside(path_)) || FileStore::replace(path_, text)) {
            return; // the changes hold for this run, and go out with the next write
        }
    }
    stored_->object = std::move(next);
    stored_->unsaved.clear();
}

} // namespace tarnwick
