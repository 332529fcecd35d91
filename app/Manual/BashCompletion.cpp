#include "app/Manual/Completion.h"

#include "app/CommandLine/CommonOptions.h"
#include "app/Preferences/SettingTable.h"

#include <algorithm>

namespace tarnwick {

namespace {

/// What bash takes as the name of a function.
std::string bashFunction(const ProgramTable& program) {
    std::string name = std::string("_") + program.name;
    std::ranges::replace(name, '-', '_');
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

/// Values that can't be listed.
std::string bashOtherValues(const ProgramTable& program) {
    std::string patterns = "?*,*";
    for (const ProgramOption& option : program.options) {
        if (option.argument != nullptr && option.letter != CommonOptions::setLetter) {
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

constexpr auto bashHosts =
    R"([[ $word == -* ]] || { COMPREPLY=($(compgen -A hostname -- "$word")); return; }; )";

} // namespace

std::string bashCompletion(const ProgramTable& program) {
    const std::string function = bashFunction(program);
    return std::string("# Completes ") + program.name + " in bash.\n" + function + "() {\n" + bashStart
           + bashChoices()
           + "        Hostname,*) COMPREPLY=($(compgen -A hostname -- \"$word\")); return ;;\n"
           + "        --set,* | ,--set) words=\"" + bashKeys() + "\"; compopt -o nospace ;;\n"
           + bashOtherValues(program) + "        *) " + (program.operand.name != nullptr ? bashHosts : "")
           + "words=\"" + bashOptions(program) + "\" ;;\n    esac\n"
           + "    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n}\ncomplete -F " + function + ' '
           + program.name + "\n";
}

} // namespace tarnwick
