// A locale for one test. Few machines have more than "C" installed, so it is made with localedef.
#pragma once

#include "tests/support/Command.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Variable.h"

#include <fstream>
#include <string>

namespace tarnwick::test {

/// Has only the way that `original`, such as "de_DE", writes numbers (LC_NUMERIC). The C library finds it by
/// `name()` until it is destroyed.
class MadeLocale {
public:
    explicit MadeLocale(const std::string& original) : name_(original + ".UTF-8") {
        const std::filesystem::path source = folder_.path() / "source";
        std::ofstream(source) << "LC_NUMERIC\ncopy \"" << original << "\"\nEND LC_NUMERIC\n";
        // -c: although the other categories are missing.
        static_cast<void>(run(
            "localedef -c -i " + shellQuoted(source) + " -f UTF-8 " + shellQuoted(folder_.path() / name_)));
    }

    /// localedef and the original are there.
    [[nodiscard]] bool isMade() const {
        return std::filesystem::exists(folder_.path() / name_ / "LC_NUMERIC");
    }

    [[nodiscard]] const char* name() const { return name_.c_str(); }

private:
    TemporaryFolder folder_;
    Variable path_{"LOCPATH", folder_.path().c_str()};
    std::string name_;
};

} // namespace tarnwick::test
