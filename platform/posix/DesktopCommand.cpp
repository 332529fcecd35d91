#include "platform/posix/DesktopCommand.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <sstream>
#include <unistd.h>

namespace tarnwick::DesktopCommand {

namespace {

namespace fs = std::filesystem;

/// They mean the same everywhere without quotation marks.
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

std::string withSinglePercents(std::string word) {
    for (std::size_t at = word.find("%%"); at != std::string::npos; at = word.find("%%", at + 1)) {
        word.erase(at, 1);
    }
    return word;
}

/// Roughly: what stands between the signs that end a word in a shell.
std::vector<std::string> shellWords(const std::string& script) {
    std::vector<std::string> result(1);
    for (const char letter : script) {
        if (std::string_view(" \t\n;&|()'\"").find(letter) == std::string_view::npos) {
            result.back() += letter;
        } else {
            result.emplace_back();
        }
    }
    return result;
}

bool isExecutableFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

} // namespace

std::string starting(const fs::path& program) {
    const std::string& path = program.native();
    if (std::ranges::all_of(path, isPlain)) {
        return path;
    }
    if (path.find('%') == std::string::npos) {
        return inQuotes(path);
    }
    // Desktops look for the program before they turn "%%" into "%", which they do in its arguments alone.
    return "sh -c " + inQuotes(R"(exec "$0")") + " " + inQuotes(path);
}

std::optional<std::vector<std::string>> words(std::string_view command) {
    std::vector<std::string> result;
    bool isInWord = false;
    bool isInQuotes = false;
    for (std::size_t at = 0; at < command.size(); ++at) {
        const char letter = command[at];
        if (letter == ' ' && !isInQuotes) {
            isInWord = false;
            continue;
        }
        if (!isInWord) {
            result.emplace_back();
            isInWord = true;
        }
        if (letter == '"') {
            isInQuotes = !isInQuotes;
        } else if (letter == '\\' && isInQuotes && at + 1 < command.size()) {
            result.back() += command[++at];
        } else {
            result.back() += letter;
        }
    }
    return isInQuotes ? std::nullopt : std::optional(result);
}

std::optional<std::string> program(std::string_view command) {
    const auto all = words(command);
    return all && !all->empty() ? std::optional(all->front()) : std::nullopt;
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

bool names(std::string_view command, const fs::path& program) {
    const auto isIt = [&program](const std::string& name) {
        const auto file = find(name);
        std::error_code error;
        return file && fs::equivalent(*file, program, error);
    };
    const auto all = words(command);
    return all && std::ranges::any_of(*all, [&](const std::string& word) {
               const std::string argument = withSinglePercents(word);
               return isIt(argument) || std::ranges::any_of(shellWords(argument), isIt);
           });
}

} // namespace tarnwick::DesktopCommand
