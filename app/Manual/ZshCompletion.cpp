#include "app/Manual/Completion.h"

#include "app/CommandLine/CommonOptions.h"
#include "app/Preferences/SettingTable.h"

namespace tarnwick {

namespace {

/// In single quotes, where "[", "]", ":" and the backslash have a meaning for `_arguments` and `_values`.
std::string zshQuoted(std::string_view text) {
    std::string quotedText;
    for (const char letter : text) {
        if (letter == '\'') {
            quotedText += R"('\'')";
            continue;
        }
        if (letter == '[' || letter == ']' || letter == ':' || letter == '\\') {
            quotedText += '\\';
        }
        quotedText += letter;
    }
    return quotedText;
}

std::string zshArgument(const ProgramOption& option) {
    const std::string meaning = "[" + zshQuoted(option.meaning) + "]";
    if (option.letter == CommonOptions::setLetter) {
        return std::string("'*--") + option.name + meaning + ":" + option.argument + ":->setting'";
    }
    if (option.argument != nullptr) {
        return std::string("'--") + option.name + meaning + ":" + option.argument + ": '";
    }
    if (option.shortName != 0) {
        const std::string forms = std::string("-") + option.shortName;
        return "'(" + forms + " --" + option.name + ")'{" + forms + ",--" + option.name + "}'" + meaning
               + "'";
    }
    return std::string("'--") + option.name + meaning + "'";
}

std::string zshValues(const SettingRow& row) {
    if (row.rule == SettingRule::host) {
        return "_hosts";
    }
    std::string choices;
    for (const std::string_view choice : choicesOf(row)) {
        choices += choices.empty() ? "" : " ";
        choices += choice;
    }
    return choices.empty() ? " " : "(" + choices + ")";
}

std::string zshSetting(const SettingRow& row) {
    return std::string("'") + row.key + "[" + zshQuoted(row.meaning) + "]:value:" + zshValues(row) + "'";
}

} // namespace

std::string zshCompletion(const ProgramTable& program) {
    std::string script = std::string("#compdef ") + program.name + "\n\nlocal state\n_arguments";
    for (const ProgramOption& option : program.options) {
        script += " \\\n    " + zshArgument(option);
    }
    if (program.operand.name != nullptr) {
        script += std::string(" \\\n    '1:") + program.operand.name + ":_hosts'";
    }
    script += " && return\n[ \"$state\" = setting ] && _values setting";
    for (const SettingRow& row : settingTable) {
        if (isForUsers(row)) {
            script += " \\\n    " + zshSetting(row);
        }
    }
    return script + "\n";
}

} // namespace tarnwick
