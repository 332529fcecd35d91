#include "platform/linux/RunningProgram.h"

#include <string>
#include <string_view>

namespace tarnwick {

namespace fs = std::filesystem;

std::optional<fs::path> runningProgram(const fs::path& self) {
    // The kernel appends this when the file was removed or replaced.
    constexpr std::string_view mark = " (deleted)";
    std::error_code error;
    fs::path program = fs::read_symlink(self, error);
    if (error) {
        return std::nullopt;
    }
    if (fs::is_regular_file(program, error)) {
        return program;
    }
    const std::string& name = program.native();
    if (name.ends_with(mark)) {
        fs::path successor = name.substr(0, name.size() - mark.size());
        if (fs::is_regular_file(successor, error)) {
            return successor;
        }
    }
    return std::nullopt;
}

} // namespace tarnwick
