// Theme files in folders of the test's own.
#pragma once

#include "platform/theme/ThemeFolders.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <string>

namespace tarnwick::test {

class ThemeFixture {
public:
    void writeUserSettings(const std::string& name, const std::string& text) {
        writeFile(folders.config[0] / name, text);
    }

    void writeSystemSettings(const std::string& name, const std::string& text) {
        writeFile(folders.config[1] / name, text);
    }

    /// Returns its path.
    std::filesystem::path writeTheme(const std::string& name, const std::string& text) {
        writeFile(folders.data[1] / name, text);
        return folders.data[1] / name;
    }

private:
    TemporaryFolder folder_;

public:
    const ThemeFolders folders{
        .config = {folder_.path() / "user-config", folder_.path() / "system-config"},
        .data = {folder_.path() / "user-data", folder_.path() / "system-data"}};
};

} // namespace tarnwick::test
