// What a program's command line takes, as a table. From it come the parser's options, `--help`, the manual
// page and the shells' completion, so that none of them can name an option that another does not know.
#pragma once

#include <array>
#include <cstddef>
#include <getopt.h>
#include <span>
#include <string>
#include <string_view>

namespace tarnwick {

struct ProgramOption {
    const char* name = nullptr;     ///< without the dashes
    const char* argument = nullptr; ///< what its value is called; null where it takes none
    const char* meaning = nullptr;  ///< for users, in one line
    int letter = 0;                 ///< what the parser returns for it
    char shortName = 0;             ///< also known as a dash with this letter
    const char* values = nullptr; ///< all that it takes, with spaces between; null where they can't be listed

    /// What the value is called where it is a host.
    static constexpr std::string_view hostArgument = "HOST";
};

/// What stands on a command line without dashes. No name where the program takes nothing there.
struct ProgramOperand {
    const char* name = nullptr;
    const char* meaning = nullptr;
};

struct ProgramTable;

/// A first word after which the command line is another program's. No word where there is none.
struct ProgramCommand {
    const char* word = nullptr;
    const ProgramTable& (*table)() = nullptr;
};

/// All of it is constant and lives as long as the program.
struct ProgramTable {
    const char* name;
    const char* purpose; ///< a few words, as for `apropos`
    std::span<const char* const> synopsis;
    const char* summary; ///< one paragraph; its lines are broken by hand
    ProgramOperand operand;
    std::span<const ProgramOption> options;
    const char* ending; ///< how the program ends, and its exit status
    ProgramCommand command{};
};

/// The same rows for the parser, with the row of zeros that ends them.
template<std::size_t Count>
[[nodiscard]] constexpr std::array<option, Count + 1> parserOptions(
    const std::array<ProgramOption, Count>& options) {
    std::array<option, Count + 1> rows{};
    for (std::size_t index = 0; index < Count; ++index) {
        const ProgramOption& row = options.at(index);
        rows.at(index) = {
            row.name, row.argument == nullptr ? no_argument : required_argument, nullptr, row.letter};
    }
    return rows;
}

/// The text of `--help`.
[[nodiscard]] std::string usageOf(const ProgramTable& program);

} // namespace tarnwick
