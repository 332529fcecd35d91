#include "platform/linux/RunningProgram.h"

#include <csignal>
#include <string_view>
#include <unistd.h>

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

void becomeProgram(const fs::path& program, const std::vector<std::string>& arguments) {
    std::vector<std::string> words{program.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    sigset_t none{};
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::execv(program.c_str(), pointers.data());
}

} // namespace tarnwick
