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
        const std::string others = takesHost(option) ? "_hosts" : " ";
        const std::string values = option.values != nullptr ? "(" + std::string(option.values) + ")" : others;
        return std::string("'--") + option.name + meaning + ":" + option.argument + ":" + values + "'";
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

std::string zshArguments(const ProgramTable& program) {
    std::string text = "_arguments";
    for (const ProgramOption& option : program.options) {
        text += " \\\n    " + zshArgument(option);
    }
    if (program.operand.name != nullptr) {
        const bool hasCommand = program.command.word != nullptr;
        text += std::string(" \\\n    '1:") + program.operand.name + ":"
                + (hasCommand ? std::string("{ compadd ") + program.command.word + "; _hosts }'" : "_hosts'");
    }
    return text;
}

/// Its words begin behind the first one, as if it were a program of its own.
std::string zshCommand(const ProgramTable& program) {
    if (program.command.word == nullptr) {
        return "";
    }
    return std::string("if [ $CURRENT -gt 2 ] && [ \"$words[2]\" = ") + program.command.word
           + " ]; then\n    shift words\n    (( CURRENT-- ))\n    " + zshArguments(program.command.table())
           + "\n    return\nfi\n";
}

} // namespace

std::string zshCompletion(const ProgramTable& program) {
    std::string script = std::string("#compdef ") + program.name + "\n\nlocal state\n";
    script += zshCommand(program) + zshArguments(program);
    script += " && return\n[ \"$state\" = setting ] && _values setting";
    for (const SettingRow& row : settingTable) {
        if (isForUsers(row)) {
            script += " \\\n    " + zshSetting(row);
        }
    }
    return script + "\n";
}

} // namespace tarnwick
