#include "platform/bundle/UpdateFolder.h"

#include "core/Storage/FileStore.h"
#include "core/Storage/JsonObject.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;
using Phase = UpdateRecord::Phase;

constexpr std::array phaseNames{
    std::pair{Phase::prepared, std::string_view("prepared")},
    std::pair{Phase::exchanging, std::string_view("exchanging")},
    std::pair{Phase::fresh, std::string_view("fresh")},
    std::pair{Phase::begun, std::string_view("begun")},
    std::pair{Phase::ended, std::string_view("ended")},
};

std::string textIn(const nlohmann::json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

} // namespace

UpdateFolder::UpdateFolder(fs::path bundle)
    : bundle_(std::move(bundle)),
      path_(bundle_.parent_path() / ("." + bundle_.filename().string() + ".update")) {
}

bool UpdateFolder::isOurs() const {
    struct stat status{};
    return ::lstat(path_.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid()
           && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

std::optional<WriterLock> UpdateFolder::lock() const {
    if (!isOurs()) {
        return std::nullopt; // taking a lock would make the folder, or follow a link
    }
    WriterLock lock(path_ / "update");
    return lock.acquire() == WriterLock::Attempt::taken ? std::optional(std::move(lock)) : std::nullopt;
}

std::optional<UpdateRecord> UpdateFolder::record() const {
    if (!isOurs()) {
        return std::nullopt;
    }
    std::error_code error;
    const auto text = FileStore::read(recordFile(), error);
    const auto object = text ? parseJsonObject(*text) : std::nullopt;
    if (!object) {
        return std::nullopt;
    }
    const auto* const phase =
        std::ranges::find(phaseNames, textIn(*object, "phase"), &std::pair<Phase, std::string_view>::second);
    const auto from = ReleaseVersion::parse(textIn(*object, "from"));
    const auto to = ReleaseVersion::parse(textIn(*object, "to"));
    if (phase == phaseNames.end() || !from || !to) {
        return std::nullopt;
    }
    return UpdateRecord{.phase = phase->first, .from = *from, .to = *to};
}

bool UpdateFolder::write(const UpdateRecord& record) const {
    const auto* const phase =
        std::ranges::find(phaseNames, record.phase, &std::pair<Phase, std::string_view>::first);
    const nlohmann::json object{
        {"phase", phase->second}, {"from", record.from.text()}, {"to", record.to.text()}};
    return !FileStore::replace(recordFile(), object.dump(4) + "\n");
}

void UpdateFolder::empty() const {
    if (!isOurs()) {
        return;
    }
    // The record first, also on the disk: without it nobody looks for the rest.
    std::error_code ignored;
    if (fs::remove(recordFile(), ignored)) {
        FileStore::flushFolder(path_);
    }
    fs::remove(archive(), ignored);
    fs::remove_all(unpacked(), ignored);
}

void UpdateFolder::remove() const {
    empty();
    std::error_code ignored;
    if (isOurs()) {
        fs::remove_all(path_, ignored);
    }
}

std::variant<BundleInformation, DocumentMistake> informationOf(const fs::path& bundle) {
    std::error_code error;
    const auto text = FileStore::read(bundle / bundleInformationName, error);
    if (!text) {
        return DocumentMistake{error.message()};
    }
    return parseBundleInformation(*text);
}

std::optional<ReleaseVersion> versionOf(const fs::path& bundle) {
    const auto read = informationOf(bundle);
    const auto* const information = std::get_if<BundleInformation>(&read);
    return information != nullptr ? std::optional(information->version) : std::nullopt;
}

} // namespace tarnwick
