// The C library's option parser over a command line of our own.
#pragma once

#include <getopt.h>
#include <span>
#include <string>
#include <vector>

namespace tarnwick {

/// One command line at a time: the library keeps its place in variables of the process.
class ArgumentParser {
public:
    static constexpr int endOfOptions = -1;
    static constexpr int missingValue = ':';

    /// Values of `known` start here, so that an option and a letter are never mistaken for each other.
    static constexpr int firstOption = 256;

    /// `arguments` are without the program's name. `known` ends with an option of zeros and outlives the
    /// parser.
    ArgumentParser(const std::vector<std::string>& arguments, std::span<const option> known);

    ArgumentParser(const ArgumentParser&) = delete;
    ArgumentParser& operator=(const ArgumentParser&) = delete;

    /// The next option's value in `known`, `missingValue`, something else for an unknown one, or
    /// `endOfOptions`.
    int next();

    [[nodiscard]] static std::string value() { return optarg; }

    /// What the latest complaint is about: a single letter, or else the whole argument.
    [[nodiscard]] std::string culprit() const;

    [[nodiscard]] std::vector<std::string> rest() const;

private:
    std::string name_ = "tarnwick";
    std::vector<std::string> arguments_; // a copy: the library wants them writable
    std::vector<char*> pointers_;
    std::span<const option> known_;
};

} // namespace tarnwick
