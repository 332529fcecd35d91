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
constexpr auto newsKey = "news";

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
    if (const auto found = object->find(newsKey); found != object->end() && found->is_string()) {
        news_ = found->get<std::string>();
    }
}

void UpdateMemory::store() const {
    nlohmann::json object = nlohmann::json::object();
    if (lastFeed_) {
        object[lastFeedKey] = std::int64_t{lastFeed_->time_since_epoch().count()};
    }
    if (rolledBack_) {
        object[rolledBackKey] = rolledBack_->text();
    }
    if (!news_.empty()) {
        object[newsKey] = news_;
    }
    static_cast<void>(FileStore::replace(file_, object.dump(4) + "\n"));
}

void UpdateMemory::setLastFeed(std::chrono::sys_seconds signedAt) {
    if (std::exchange(lastFeed_, signedAt) != signedAt) {
        store();
    }
}

void UpdateMemory::setRolledBack(const ReleaseVersion& version, const ReleaseVersion& running) {
    rolledBack_ = version;
    setNews(
        "Tarnwick " + version.text() + " did not run on this machine, so version " + running.text()
        + " is back.");
}

void UpdateMemory::setNews(const std::string& text) {
    news_ = text;
    store();
}

std::string UpdateMemory::takeNews() {
    if (news_.empty()) {
        return "";
    }
    std::string news = std::exchange(news_, "");
    store();
    return news;
}

} // namespace tarnwick
