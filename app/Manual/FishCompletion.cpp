#include "app/Manual/Completion.h"

#include "app/CommandLine/CommonOptions.h"
#include "app/Preferences/SettingTable.h"

namespace tarnwick {

namespace {

/// In single quotes.
std::string fishQuoted(std::string_view text) {
    std::string quotedText = "'";
    for (const char letter : text) {
        if (letter == '\'' || letter == '\\') {
            quotedText += '\\';
        }
        quotedText += letter;
    }
    return quotedText + "'";
}

/// A key, or each of its values, with what the setting means.
std::string fishSetting(const SettingRow& row) {
    const std::string meaning = "\\t" + fishQuoted(row.meaning);
    std::string words;
    for (const std::string_view choice : choicesOf(row)) {
        words += std::string(" ") + row.key + "=" + std::string(choice) + meaning;
    }
    return words.empty() ? std::string(" ") + row.key + "=" + meaning : words;
}

constexpr auto fishHosts = "'(__fish_print_hostnames)'";

/// `start` is the command, with the condition under which it has the option.
std::string fishOption(const std::string& start, const ProgramOption& option) {
    std::string line = start + " -l " + option.name;
    if (option.shortName != 0) {
        line += std::string(" -s ") + option.shortName;
    }
    line += " -d " + fishQuoted(option.meaning);
    line += option.argument != nullptr ? " -x" : "";
    if (option.letter == CommonOptions::setLetter) {
        return line + " -a '(__tarnwick_settings)'\n";
    }
    if (option.values != nullptr) {
        return line + " -a " + fishQuoted(option.values) + "\n";
    }
    return line + (takesHost(option) ? std::string(" -a ") + fishHosts : "") + "\n";
}

std::string fishOptions(const std::string& start, const ProgramTable& program) {
    std::string lines;
    for (const ProgramOption& option : program.options) {
        lines += fishOption(start, option);
    }
    return lines;
}

/// What holds while the command line is the other one's.
std::string fishCondition(const ProgramCommand& command) {
    return std::string("__fish_seen_subcommand_from ") + command.word;
}

} // namespace

std::string fishCompletion(const ProgramTable& program) {
    std::string script = std::string("# Completes ") + program.name
                         + " in fish.\nfunction __tarnwick_settings\n" + "    printf '%s\\n'";
    for (const SettingRow& row : settingTable) {
        if (isForUsers(row)) {
            script += " \\\n       " + fishSetting(row);
        }
    }
    const std::string start = std::string("complete -c ") + program.name;
    const ProgramCommand& command = program.command;
    const std::string own =
        command.word == nullptr ? start : start + " -n 'not " + fishCondition(command) + "'";
    script += "\nend\n\n" + start + " -f\n";
    script += program.operand.name != nullptr ? own + " -a " + fishHosts + "\n" : "";
    script += fishOptions(own, program);
    if (command.word != nullptr) {
        script += start + " -n __fish_use_subcommand -a " + command.word + " -d "
                  + fishQuoted(command.table().purpose) + "\n";
        script += fishOptions(start + " -n '" + fishCondition(command) + "'", command.table());
    }
    return script;
}

} // namespace tarnwick
