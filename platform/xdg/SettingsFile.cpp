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

/// Nothing when the file is there but can't be read. No file is an empty object.
std::optional<std::string> readText(const std::filesystem::path& path) {
    std::error_code error;
    auto text = FileStore::read(path, error);
    return error == std::errc::no_such_file_or_directory ? std::optional<std::string>("{}") : text;
}

std::optional<Json> objectIn(const std::optional<std::string>& text) {
    return text ? parseJsonObject(*text) : std::nullopt;
}

} // namespace

struct SettingsFile::Stored {
    Json object = Json::object();                         ///< as last known on disk
    std::map<std::string, std::optional<Json>> unsaved{}; ///< changes not on disk yet; none: removed

    /// An unsaved change, else the value on disk.
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

SettingsFile::SettingsFile(RunLoop& loop, std::filesystem::path path, Table forThisRun)
    : loop_(loop),
      path_(std::move(path)),
      forThisRun_(std::move(forThisRun)),
      stored_(std::make_unique<Stored>()) {
    reload();
}

// NOLINTNEXTLINE(bugprone-exception-escape): only a lack of memory throws, and it ends the program
SettingsFile::~SettingsFile() {
    onWritten = nullptr;
    flush();
}

std::filesystem::path SettingsFile::defaultPath() {
    return UserFolders::config() / "Tarnwick" / "settings.json";
}

bool SettingsFile::reload() {
    auto text = readText(path_);
    if (text == knownText_) {
        return false;
    }
    auto present = objectIn(text);
    if (!present) {
        return false;
    }
    stored_->object = std::move(*present);
    knownText_ = std::move(text);
    return true;
}

void SettingsFile::registerDefaults(const Table& defaults) {
    for (const auto& [key, value] : defaults) {
        registered_[key] = value;
    }
}

template<class T>
std::optional<T> SettingsFile::find(const std::string& key) const {
    if (const auto value = valueIn<T>(forThisRun_, key)) {
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
    forThisRun_.erase(key);
    stored_->unsaved[key] = std::visit([](const auto& held) { return Json(held); }, value);
    changed();
}

void SettingsFile::remove(const std::string& key) {
    forThisRun_.erase(key);
    stored_->unsaved[key] = std::nullopt;
    changed();
}

void SettingsFile::changed() {
    // A pending write is not put off: a long row of changes is written while it goes on.
    if (!writeTimer_) {
        writeTimer_ = loop_.after(writeDelay, [this] { flush(); });
    }
}

void SettingsFile::flush() {
    writeTimer_.reset();
    retryTimer_.reset();
    if (!stored_->unsaved.empty()) {
        write();
    }
    if (!stored_->unsaved.empty()) {
        retryTimer_ = loop_.after(retryDelay, [this] { flush(); });
    }
}

void SettingsFile::write() {
    // Other programs may have changed the file: their changes are kept.
    const std::optional<std::string> presentText = readText(path_);
    const bool hasForeignChanges = presentText != knownText_;
    const std::optional<Json> present = objectIn(presentText);
    Json next = stored_->withUnsaved(present.value_or(stored_->object));
    const bool isNew = !present || *present != next;
    if (isNew) {
        const std::string text = next.dump(4, ' ', false, Json::error_handler_t::replace) + "\n";
        if ((!present && FileStore::keepAside(path_)) || FileStore::replace(path_, text)) {
            return; // the changes stay unsaved
        }
        // After foreign changes the next reload must report something new.
        knownText_ = hasForeignChanges ? std::nullopt : std::optional(text);
    }
    stored_->object = std::move(next);
    stored_->unsaved.clear();
    if (isNew && onWritten) {
        onWritten();
    }
}

} // namespace tarnwick
