#include "app/Manual/Completion.h"

#include "app/CommandLine/CommonOptions.h"
#include "app/Preferences/SettingTable.h"

#include <algorithm>

namespace tarnwick {

namespace {

constexpr auto bashHostnames = "COMPREPLY=($(compgen -A hostname -- \"$word\")); return ;;\n";

/// What bash takes as the name of a function.
std::string bashFunction(const ProgramTable& program) {
    std::string name = std::string("_") + program.name;
    std::ranges::replace(name, '-', '_');
    std::ranges::replace(name, ' ', '_');
    return name;
}

void appendWord(std::string& words, std::string_view word) {
    words += words.empty() ? "" : " ";
    words += word;
}

std::string bashChoices() {
    std::string cases;
    for (const SettingRow& row : settingTable) {
        std::string words;
        for (const std::string_view choice : choicesOf(row)) {
            appendWord(words, choice);
        }
        if (!words.empty() && isForUsers(row)) {
            cases += std::string("        ") + row.key + ",*) words=\"" + words + "\" ;;\n";
        }
    }
    return cases;
}

std::string bashKeys() {
    std::string words;
    for (const SettingRow& row : settingTable) {
        if (isForUsers(row)) {
            appendWord(words, std::string(row.key) + "=");
        }
    }
    return words;
}

std::string bashOptions(const ProgramTable& program) {
    std::string words;
    for (const ProgramOption& option : program.options) {
        appendWord(words, std::string("--") + option.name);
    }
    return words;
}

/// What completes its value; empty where nothing does.
std::string bashValue(const ProgramOption& option) {
    if (option.letter == CommonOptions::setLetter) {
        return "words=\"" + bashKeys() + "\"; compopt -o nospace ;;\n";
    }
    if (option.values != nullptr) {
        return std::string("words=\"") + option.values + "\" ;;\n";
    }
    return takesHost(option) ? bashHostnames : "";
}

std::string bashOptionValues(const ProgramTable& program) {
    std::string cases;
    for (const ProgramOption& option : program.options) {
        if (const std::string value = bashValue(option); !value.empty()) {
            const std::string name = std::string("--") + option.name;
            cases.append("        ").append(name).append(",* | ,").append(name).append(") ").append(value);
        }
    }
    return cases;
}

/// Values that can't be listed.
std::string bashOtherValues(const ProgramTable& program) {
    std::string patterns = "?*,*";
    for (const ProgramOption& option : program.options) {
        if (option.argument != nullptr && bashValue(option).empty()) {
            patterns += std::string(" | ,--") + option.name;
        }
    }
    return "        " + patterns + ") return ;;\n";
}

constexpr auto bashStart =
    R"(    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} key= words=
    # The shell takes "=" as a word of its own.
    if [ "$word" = "=" ]; then
        key=$before word=
    elif [ "$before" = "=" ]; then
        key=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    case $key,$before in
)";

/// What stands for itself: a host, or the word for the other command line.
std::string bashOperand(const ProgramTable& program) {
    if (program.operand.name == nullptr) {
        return "";
    }
    const std::string word = program.command.word != nullptr ? program.command.word : "";
    return R"([[ $word == -* ]] || { [ "$COMP_CWORD" -eq 1 ] && words=")" + word
           + R"("; COMPREPLY=($(compgen -A hostname -W "$words" -- "$word")); return; }; )";
}

std::string bashCommand(const ProgramTable& program) {
    if (program.command.word == nullptr) {
        return "";
    }
    return std::string(R"(    if [ "$COMP_CWORD" -gt 1 ] && [ "${COMP_WORDS[1]}" = )") + program.command.word
           + " ]; then\n        " + bashFunction(program.command.table()) + "\n        return\n    fi\n";
}

std::string bashBody(const ProgramTable& program) {
    const bool hasSettings = std::ranges::any_of(program.options, [](const ProgramOption& option) {
        return option.letter == CommonOptions::setLetter;
    });
    const std::string settings =
        hasSettings ? bashChoices() + "        Hostname,*) " + bashHostnames : std::string();
    return bashFunction(program) + "() {\n" + bashCommand(program) + bashStart + settings
           + bashOptionValues(program) + bashOtherValues(program) + "        *) " + bashOperand(program)
           + "words=\"" + bashOptions(program) + "\" ;;\n    esac\n"
           + "    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n}\n";
}

} // namespace

std::string bashCompletion(const ProgramTable& program) {
    const std::string command =
        program.command.word != nullptr ? bashBody(program.command.table()) : std::string();
    return std::string("# Completes ") + program.name + " in bash.\n" + command + bashBody(program)
           + "complete -F " + bashFunction(program) + ' ' + program.name + "\n";
}

} // namespace tarnwick
