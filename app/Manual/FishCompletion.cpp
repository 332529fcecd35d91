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

std::string fishOption(const ProgramTable& program, const ProgramOption& option) {
    std::string line = std::string("complete -c ") + program.name + " -l " + option.name;
    if (option.shortName != 0) {
        line += std::string(" -s ") + option.shortName;
    }
    line += " -d " + fishQuoted(option.meaning);
    line += option.argument != nullptr ? " -x" : "";
    return option.letter == CommonOptions::setLetter ? line + " -a '(__tarnwick_settings)'" : line;
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
    script += std::string("\nend\n\ncomplete -c ") + program.name + " -f";
    script += program.operand.name != nullptr ? " -a '(__fish_print_hostnames)'\n" : "\n";
    for (const ProgramOption& option : program.options) {
        script += fishOption(program, option) + "\n";
    }
    return script;
}

} // namespace tarnwick
