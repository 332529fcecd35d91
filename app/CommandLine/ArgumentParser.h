// The C library's option parser as a value.
#pragma once

#include <getopt.h>
#include <span>
#include <string>
#include <vector>

namespace tarnwick {

/// The arguments of `main` without the program's name, which may be missing as well.
[[nodiscard]] std::vector<std::string> argumentsOf(int argc, const char* const* argv);

/// Only one at a time: the library keeps its position in global variables.
class ArgumentParser {
public:
    static constexpr int endOfOptions = -1;
    static constexpr int missingValue = ':';
    static constexpr int unwantedValue = '=';

    /// The first value for options of `known`, above those of all letters.
    static constexpr int firstOption = 256;

    /// `arguments` without the program's name. `known` ends with an option of zeros and outlives the parser.
    ArgumentParser(const std::vector<std::string>& arguments, std::span<const option> known);

    ArgumentParser(const ArgumentParser&) = delete;
    ArgumentParser& operator=(const ArgumentParser&) = delete;

    /// Of the option "-h".
    static constexpr char shortHelp = 'h';

    /// The value in `known` of the next option, `shortHelp`, `missingValue`, `unwantedValue` or
    /// `endOfOptions`; another number for an unknown option.
    int next();

    [[nodiscard]] static std::string value() { return optarg; }

    /// The option that the latest error is about: a single letter, else the whole argument, without an
    /// unwanted value.
    [[nodiscard]] std::string culprit() const;

    [[nodiscard]] std::vector<std::string> rest() const;

private:
    std::string name_ = "tarnwick";
    std::vector<std::string> arguments_; // a copy: the library needs them writable
    std::vector<char*> pointers_;
    std::span<const option> known_;
};

} // namespace tarnwick
