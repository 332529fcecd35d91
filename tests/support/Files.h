// Reading and writing files in tests, without the code under test.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tarnwick::test {

/// Creates the folder as well.
inline void writeFile(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

inline std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Nothing else may be left in the folder, be it a draft or a lock.
inline int fileCount(const std::filesystem::path& folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<int>(std::distance(begin(entries), end(entries)));
}

} // namespace tarnwick::test
