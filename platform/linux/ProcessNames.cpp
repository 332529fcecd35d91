#include "platform/linux/ProcessNames.h"

#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace tarnwick {

std::vector<std::string> processNames(unsigned pid) {
    const std::filesystem::path folder = "/proc/" + std::to_string(pid);
    std::vector<std::string> names;
    std::ifstream file(folder / "comm");
    if (std::string name; std::getline(file, name)) {
        names.push_back(std::move(name));
    }
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink(folder / "exe", error);
    if (!error) {
        names.push_back(program.filename().string());
    }
    return names;
}

} // namespace tarnwick
