#include "app/Update/UpdateMemory.h"

#include "core/Storage/FileStore.h"
#include "core/Storage/JsonObject.h"

#include <cstdint>
#include <string>
#include <utility>

namespace tarnwick {

namespace {

constexpr auto lastFeedKey = "lastFeed"; ///< seconds since 1970
constexpr auto rolledBackKey = "rolledBack";
constexpr auto newsKey = "rolledBackNews";

} // namespace

UpdateMemory::UpdateMemory(std::filesystem::path file) : file_(std::move(file)) {
    load();
}

void UpdateMemory::load() {
    std::error_code error;
    const auto text = FileStore::read(file_, error);
    const auto object = text ? parseJsonObject(*text) : std::nullopt;
    if (!object) {
        return;
    }
    if (const auto found = object->find(lastFeedKey); found != object->end() && found->is_number_integer()) {
        lastFeed_ = std::chrono::sys_seconds(std::chrono::seconds(found->get<std::int64_t>()));
    }
    if (const auto found = object->find(rolledBackKey); found != object->end() && found->is_string()) {
        rolledBack_ = ReleaseVersion::parse(found->get<std::string>());
    }
    const auto news = object->find(newsKey);
    hasNews_ = rolledBack_ && news != object->end() && news->is_boolean() && news->get<bool>();
}

void UpdateMemory::store() const {
    nlohmann::json object = nlohmann::json::object();
    if (lastFeed_) {
        object[lastFeedKey] = std::int64_t{lastFeed_->time_since_epoch().count()};
    }
    if (rolledBack_) {
        object[rolledBackKey] = rolledBack_->text();
        object[newsKey] = hasNews_;
    }
    static_cast<void>(FileStore::replace(file_, object.dump(4) + "\n"));
}

void UpdateMemory::setLastFeed(std::chrono::sys_seconds signedAt) {
    if (std::exchange(lastFeed_, signedAt) != signedAt) {
        store();
    }
}

void UpdateMemory::setRolledBack(const ReleaseVersion& version) {
    rolledBack_ = version;
    hasNews_ = true;
    store();
}

bool UpdateMemory::takeNewsOfRollBack() {
    if (!std::exchange(hasNews_, false)) {
        return false;
    }
    store();
    return true;
}

} // namespace tarnwick
