// Test cases written as data: each names a behavior and lists steps with their expected results.
#pragma once

#include "tests/support/CaseName.h"

#include <cstddef>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace tarnwick::test {

/// "STEP WORD... -> RESULT": what is done, and what comes of it (empty without an arrow).
struct CaseStep {
    std::size_t line;
    std::vector<std::string> words;
    std::string expected;

    /// The word at `index` as a number; complains when there is none.
    [[nodiscard]] double number(std::size_t index) const;
    /// Empty when there is none.
    [[nodiscard]] std::string word(std::size_t index) const;
};

struct Case {
    std::string name;
    std::filesystem::path file;
    std::vector<CaseStep> steps;

    friend std::ostream& operator<<(std::ostream& out, const Case& shown) { return out << shown.name; }
};

/// The cases of a file in the folder `cases` beside the tests. tests/core/cases/README.md describes the
/// format.
[[nodiscard]] std::vector<Case> readCases(const std::string& fileName);

/// "FILE:LINE: WORD...": says where in the data a test failed.
[[nodiscard]] std::string place(const Case& tested, const CaseStep& step);

} // namespace tarnwick::test
