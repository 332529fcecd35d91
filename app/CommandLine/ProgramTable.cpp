#include "app/CommandLine/ProgramTable.h"

#include "app/CommandLine/SettingArgument.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

std::string writtenOption(const ProgramOption& option) {
    std::string text = option.shortName == 0 ? std::string() : std::string{'-', option.shortName, ',', ' '};
    text += std::string("--") + option.name;
    return option.argument == nullptr ? text : text + ' ' + option.argument;
}

/// In two columns.
std::string argumentsUsage(const ProgramTable& program) {
    std::vector<std::pair<std::string, const char*>> rows;
    if (program.operand.name != nullptr) {
        rows.emplace_back(program.operand.name, program.operand.meaning);
    }
    std::size_t width = 0;
    for (const ProgramOption& option : program.options) {
        rows.emplace_back(writtenOption(option), option.meaning);
        width = std::max(width, rows.back().first.size());
    }
    std::string usage;
    for (auto& [argument, meaning] : rows) {
        argument.resize(std::max(width, argument.size()), ' ');
        usage += "  " + argument + "  " + meaning + "\n";
    }
    return usage;
}

} // namespace

std::string usageOf(const ProgramTable& program) {
    std::string usage;
    for (const char* const line : program.synopsis) {
        usage += std::string(usage.empty() ? "usage: " : "       ") + program.name + ' ' + line + "\n";
    }
    usage += std::string("\n") + program.summary + "\n\n" + argumentsUsage(program) + "\n" + settingsUsage();
    return usage + "\n" + program.ending + "\n";
}

} // namespace tarnwick
