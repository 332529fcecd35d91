// Other programs, run to their end.
#pragma once

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <sys/wait.h>

namespace tarnwick::test {

struct CommandResult {
    int status = -1; ///< -1 when a signal ended it
    std::string output;
};

/// As the shell understands it.
inline CommandResult run(const std::string& command) {
    CommandResult result;
    FILE* output = ::popen((command + " 2>&1").c_str(), "r");
    if (output == nullptr) {
        return result;
    }
    std::array<char, 4096> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), output)) {
        result.output.append(buffer.data(), count);
    }
    const int status = ::pclose(output);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

/// For a path that is part of such a command.
inline std::string shellQuoted(const std::filesystem::path& path) {
    std::string result = "'";
    for (const char letter : path.native()) {
        if (letter == '\'') {
            result += "'\\''";
        } else {
            result += letter;
        }
    }
    return result + "'";
}

} // namespace tarnwick::test
