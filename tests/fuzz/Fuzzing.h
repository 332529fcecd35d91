// What the fuzz targets share: stopping at a broken promise, and files in a folder of their own.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>

namespace tarnwick::fuzz {

/// The fuzzer keeps the input that leads here.
inline void require(bool promiseIsKept) {
    if (!promiseIsKept) {
        std::abort();
    }
}

/// A folder that is empty before each run; in memory where there is such a file system.
class ScratchFolder {
public:
    ScratchFolder() {
        std::string name = "/dev/shm/tarnwick-fuzz-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) {
            name = (std::filesystem::temp_directory_path() / "tarnwick-fuzz-XXXXXX").string();
            require(::mkdtemp(name.data()) != nullptr);
        }
        path_ = name;
    }

    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    void clear() const {
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            std::filesystem::remove_all(entry.path());
        }
    }

    /// Holds exactly these bytes.
    [[nodiscard]] std::filesystem::path fileOf(std::span<const std::uint8_t> bytes) const {
        clear();
        std::filesystem::path file = path_ / "input.json";
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return file;
    }

private:
    std::filesystem::path path_;
};

} // namespace tarnwick::fuzz
