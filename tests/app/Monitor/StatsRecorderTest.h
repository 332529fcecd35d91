// One or two recorders of all-time figures, and the folder of the file that they share.
#pragma once

#include "app/Monitor/StatsRecorder.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace tarnwick {

class StatsRecorderTest : public testing::Test {
protected:
    static constexpr auto forTheCrash = FileStore::Durability::crash;
    static constexpr auto forThePowerCut = FileStore::Durability::powerCut;
    static constexpr auto host = "host.test";
    static constexpr auto otherHost = "other.test";

    [[nodiscard]] static StatCounter sent(std::int64_t count) { return {.sent = count}; }

    StatsRecorder& start(std::optional<StatsRecorder>& recorder) const {
        recorder.emplace(store);
        recorder->load();
        return *recorder;
    }

    void writeFile(const std::string& text) const { test::writeFile(store.url, text); }

    /// Each replacement of the file makes a new one of the same name.
    [[nodiscard]] ino_t fileNumber() const {
        struct stat info{};

        return ::stat(store.url.c_str(), &info) == 0 ? info.st_ino : 0;
    }

    /// While this stands, no new figures can be put in the file's place.
    [[nodiscard]] std::filesystem::path obstacle() const { return store.url.string() + ".new"; }

    void letWritingFail() const { std::filesystem::create_directories(obstacle()); }

    void letWritingSucceed() const { std::filesystem::remove(obstacle()); }

    [[nodiscard]] std::filesystem::path readable() const { return store.url.string() + ".readable"; }

    /// A link to itself is in the place of the file.
    void letReadingFail() const {
        std::filesystem::rename(store.url, readable());
        std::filesystem::create_symlink(store.url.filename(), store.url);
    }

    void letReadingSucceed() const { std::filesystem::rename(readable(), store.url); }

    /// Copies of files kept aside.
    [[nodiscard]] std::ptrdiff_t keptAside() const {
        return std::count_if(
            std::filesystem::directory_iterator(store.url.parent_path()),
            std::filesystem::directory_iterator(), [](const auto& entry) {
                return entry.path().filename().string().starts_with("stats.json.unreadable");
            });
    }

    test::TemporaryFolder folder;
    StatsStore store{folder.path() / "Tarnwick" / "stats.json"};
    std::optional<StatsRecorder> first;
    std::optional<StatsRecorder> second;
};

} // namespace tarnwick
