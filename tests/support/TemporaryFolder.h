// A folder of the test's own, gone with it; in memory where the system has a place for that, because a week
// of saves would wait for the disk.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <unistd.h>

namespace tarnwick::test {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (parent() / "tarnwick-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder: " + name);
        }
        path_ = name;
    }

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

private:
    [[nodiscard]] static std::filesystem::path parent() {
        const std::filesystem::path inMemory = "/dev/shm";
        return ::access(inMemory.c_str(), W_OK | X_OK) == 0 ? inMemory
                                                            : std::filesystem::temp_directory_path();
    }

    std::filesystem::path path_;
};

} // namespace tarnwick::test
