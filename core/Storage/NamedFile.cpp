#include "core/Storage/NamedFile.h"

#include <sys/stat.h>

namespace tarnwick {

bool isNamed(int descriptor, const std::filesystem::path& path) {
    struct stat opened{};

    struct stat named{};

    return ::fstat(descriptor, &opened) == 0 && ::stat(path.c_str(), &named) == 0
           && opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

} // namespace tarnwick
