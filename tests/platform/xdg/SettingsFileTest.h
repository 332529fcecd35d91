// A settings file in a folder of the test's own, and what is read from it.
#pragma once

#include "platform/xdg/SettingsFile.h"
#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <sys/resource.h>

namespace tarnwick {

class SettingsFileTest : public testing::Test {
protected:
    using Json = nlohmann::json;

    /// What the file holds once all changes are written.
    [[nodiscard]] Json onDisk() {
        loop_.advance(SettingsFile::writeDelay);
        return Json::parse(test::contentOf(path_), nullptr, false);
    }

    void store(const std::string& text) const { test::writeFile(path_, text); }

    /// The texts of all files beside the settings file.
    [[nodiscard]] std::multiset<std::string> textsBeside() const {
        std::multiset<std::string> texts;
        for (const auto& entry : std::filesystem::directory_iterator(path_.parent_path())) {
            if (entry.path() != path_) {
                texts.insert(test::contentOf(entry.path()));
            }
        }
        return texts;
    }

    /// What is read under the keys of these tests, in whichever type there is.
    [[nodiscard]] static UserDefaults::Table valuesIn(const SettingsFile& settings) {
        UserDefaults::Table values;
        const auto take = [&values](const std::string& key, const auto& value) {
            if (value) {
                values[key] = *value;
            }
        };
        for (const std::string key : {"Hostname", "PingTimeout", "PingInterval", "ShowIcon"}) {
            take(key, settings.text(key));
            take(key, settings.number(key));
            take(key, settings.boolean(key));
        }
        return values;
    }

    simulation::VirtualRunLoop loop_;
    test::TemporaryFolder folder_;
    std::filesystem::path path_ = folder_.path() / "Tarnwick" / "settings.json";
};

/// Lets this process write no byte to a file, as on a full disk, until it goes.
class FullDisk {
public:
    FullDisk() : before_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &limit_);
        rlimit nothing = limit_;
        nothing.rlim_cur = 0;
        ::setrlimit(RLIMIT_FSIZE, &nothing);
    }

    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &limit_);
        std::signal(SIGXFSZ, before_);
    }

private:
    rlimit limit_{};
    void (*before_)(int);
};

} // namespace tarnwick
