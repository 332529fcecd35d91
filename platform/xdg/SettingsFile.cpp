#include "platform/xdg/SettingsFile.h"

#include "core/Storage/FileStore.h"
#include "core/Storage/JsonObject.h"
#include "core/Storage/UserFolders.h"

#include <set>
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

/// What the file holds as text; the error when it is there but can't be read. No file is an empty object.
struct FileText {
    std::optional<std::string> text;
    std::error_code error{};
};

FileText readText(const std::filesystem::path& path) {
    FileText file;
    file.text = FileStore::read(path, file.error);
    if (file.error == std::errc::no_such_file_or_directory) {
        return {.text = "{}"};
    }
    return file;
}

JsonReading readingOf(const FileText& file) {
    if (file.text) {
        return salvageJsonObject(*file.text);
    }
    const bool isNoFile = file.error == std::errc::invalid_argument;
    return {.mistake = JsonMistake{.line = 0, .text = isNoFile ? "it is no file" : file.error.message()}};
}

/// A link to nothing reads as an empty file, and writing makes its target: yet it may be a slip.
std::string mistakeInLink(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_symlink(path, error) && !std::filesystem::exists(path, error)
               ? "it is a link to a file that is not there"
               : "";
}

std::string textOf(const JsonMistake& mistake) {
    return mistake.line > 0 ? "line " + std::to_string(mistake.line) + ": " + mistake.text : mistake.text;
}

std::optional<UserDefaults::Value> valueOf(const Json& value) {
    if (const auto boolean = valueAs<bool>(value)) {
        return *boolean;
    }
    if (const auto number = valueAs<double>(value)) {
        return *number;
    }
    const auto text = valueAs<std::string>(value);
    return text ? std::optional<UserDefaults::Value>(*text) : std::nullopt;
}

} // namespace

struct SettingsFile::Stored {
    Json object = Json::object();                         ///< as last known on disk
    std::map<std::string, int> lines{};                   ///< of its keys
    std::set<std::string> repeated{};                     ///< of its keys, as last read
    std::map<std::string, std::optional<Json>> unsaved{}; ///< changes not on disk yet; none: removed

    void take(JsonReading reading) {
        object = std::move(reading.object);
        lines = std::move(reading.lines);
        repeated = std::move(reading.repeated);
    }

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
    if (!reload() && !mistake_.empty()) {
        stored_->take(readingOf(readText(path_)));
    }
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
    FileText file = readText(path_);
    if (file.text && file.text == knownText_) {
        return false;
    }
    JsonReading reading = readingOf(file);
    mistake_ = reading.mistake ? textOf(*reading.mistake) : mistakeInLink(path_);
    if (reading.mistake) {
        return false;
    }
    stored_->take(std::move(reading));
    knownText_ = std::move(file.text);
    return true;
}

bool SettingsFile::isWhole() const {
    return !isMissing() && !readingOf(readText(path_)).mistake;
}

std::vector<StoredSetting> SettingsFile::stored() const {
    std::vector<StoredSetting> settings;
    for (const auto& [key, value] : stored_->object.items()) {
        if (stored_->unsaved.contains(key)) {
            continue;
        }
        const auto line = stored_->lines.find(key);
        settings.push_back({
            .key = key,
            .value = valueOf(value),
            .written = value.dump(-1, ' ', false, Json::error_handler_t::replace),
            .line = line != stored_->lines.end() ? line->second : 0,
            .isRepeated = stored_->repeated.contains(key),
        });
    }
    return settings;
}

bool SettingsFile::isMissing() const {
    std::error_code error;
    return !std::filesystem::exists(path_, error) && !error;
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
    writeTimer_ = loop_.after(writeDelay, [this] { store(FileStore::Durability::crash); });
}

void SettingsFile::flush() {
    store(FileStore::Durability::powerCut);
    if (!isFlushed_) {
        FileStore::flush(path_);
        isFlushed_ = true;
    }
}

void SettingsFile::store(FileStore::Durability durability) {
    writeTimer_.reset();
    retryTimer_.reset();
    if (!stored_->unsaved.empty()) {
        write(durability);
    }
    if (!stored_->unsaved.empty()) {
        retryTimer_ = loop_.after(retryDelay, [this, durability] { store(durability); });
    }
}

bool SettingsFile::keepAside(const JsonMistake& mistake) {
    std::filesystem::path keptAs;
    if (FileStore::keepAside(path_, &keptAs)) {
        return false;
    }
    keptAside_ = textOf(mistake) + "; it is kept as " + keptAs.string();
    return true;
}

void SettingsFile::write(FileStore::Durability durability) {
    // Other programs may have changed the file: their changes are kept.
    const FileText file = readText(path_);
    const bool hasForeignChanges = file.text != knownText_;
    const JsonReading reading = readingOf(file);
    // Not what is left of a damaged file. And a file that is away for a moment has lost nothing: only a
    // reload takes its absence for empty.
    const bool isOnDisk = !reading.mistake && !isMissing();
    Json next = stored_->withUnsaved(isOnDisk ? reading.object : stored_->object);
    const bool isNew = reading.mistake || reading.object != next;
    if (isNew) {
        const std::string text = next.dump(4, ' ', false, Json::error_handler_t::replace) + "\n";
        if ((reading.mistake && !keepAside(*reading.mistake))
            || FileStore::replace(path_, text, durability)) {
            return; // the changes stay unsaved
        }
        mistake_.clear();
        isFlushed_ = durability == FileStore::Durability::powerCut;
        stored_->lines = readJsonObject(text).lines;
        stored_->repeated.clear();
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
