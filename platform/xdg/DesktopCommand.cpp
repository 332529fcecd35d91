#include "platform/xdg/DesktopCommand.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <sstream>
#include <unistd.h>

namespace tarnwick::DesktopCommand {

namespace {

namespace fs = std::filesystem;

/// Needs no quotation marks.
bool isPlain(char letter) {
    constexpr std::string_view signs = "/._-+,:@";
    return std::isalnum(static_cast<unsigned char>(letter)) != 0
           || signs.find(letter) != std::string_view::npos;
}

std::string inQuotes(std::string_view argument) {
    constexpr std::string_view special = "\"`$\\";
    std::string result = "\"";
    for (const char letter : argument) {
        if (special.find(letter) != std::string_view::npos) {
            result += '\\';
        }
        result += letter;
        if (letter == '%') {
            result += '%';
        }
    }
    return result + '"';
}

bool isExecutableFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

} // namespace

std::string starting(const fs::path& program, const std::string& option) {
    const std::string& path = program.native();
    if (std::ranges::all_of(path, isPlain)) {
        return path + " " + option;
    }
    if (path.find('%') == std::string::npos) {
        return inQuotes(path) + " " + option;
    }
    // Desktops turn "%%" into "%" in arguments only, not in the program's name: a shell starts it.
    return "sh -c " + inQuotes(R"(exec "$0" "$@")") + " " + inQuotes(path) + " " + option;
}

std::optional<std::string> program(std::string_view command) {
    const std::size_t start = command.find_first_not_of(' ');
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    command.remove_prefix(start);
    if (!command.starts_with('"')) {
        return std::string(command.substr(0, command.find(' ')));
    }
    std::string name;
    for (std::size_t at = 1; at < command.size(); ++at) {
        if (command[at] == '"') {
            return name;
        }
        if (command[at] == '\\' && at + 1 < command.size()) {
            ++at;
        }
        name += command[at];
    }
    return std::nullopt;
}

std::optional<fs::path> find(const std::string& program) {
    if (program.find('/') != std::string::npos) {
        return program.starts_with('/') && isExecutableFile(program) ? std::optional<fs::path>(program)
                                                                     : std::nullopt;
    }
    const char* path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        fs::path file = fs::path(folder) / program;
        if (!program.empty() && isExecutableFile(file)) {
            return file;
        }
    }
    return std::nullopt;
}

} // namespace tarnwick::DesktopCommand
