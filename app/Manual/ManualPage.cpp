#include "app/Manual/ManualPage.h"

#include "app/Preferences/SettingTable.h"

#include <cctype>

namespace tarnwick {

namespace {

/// With nothing in it that scdoc takes for markup.
std::string plainText(std::string_view text) {
    std::string plain;
    for (const char letter : text) {
        if (letter == '_' || letter == '*' || letter == '\\' || letter == '[' || letter == '#') {
            plain += '\\';
        }
        plain += letter;
    }
    return plain;
}

/// A line of the synopsis: options in bold, and words for the user to replace, in capitals, underlined.
std::string synopsisLine(const ProgramTable& program, std::string_view line) {
    std::string marked = std::string("*") + program.name + "* ";
    const auto isPartOfWord = [](char letter) {
        return std::isalpha(static_cast<unsigned char>(letter)) != 0 || letter == '-' || letter == '_'
               || letter == '=';
    };
    for (std::size_t at = 0; at < line.size();) {
        std::size_t end = at;
        while (end < line.size() && isPartOfWord(line[end])) {
            ++end;
        }
        if (end == at) {
            marked += plainText(line.substr(at++, 1));
            continue;
        }
        const char sign = line[at] == '-' ? '*' : '_';
        marked += sign + plainText(line.substr(at, end - at)) + sign;
        at = end;
    }
    return marked;
}

std::string synopsisOf(const ProgramTable& program) {
    std::string lines;
    for (const char* const line : program.synopsis) {
        lines += (lines.empty() ? "" : "++\n") + synopsisLine(program, line);
    }
    return lines;
}

std::string entry(const std::string& heading, std::string_view text) {
    return heading + "\n\t" + plainText(text) + "\n";
}

std::string optionsOf(const ProgramTable& program) {
    std::string text;
    if (program.operand.name != nullptr) {
        text += entry(std::string("_") + program.operand.name + "_", program.operand.meaning);
    }
    for (const ProgramOption& option : program.options) {
        std::string heading = option.shortName == 0 ? "" : std::string("*-") + option.shortName + "*, ";
        heading += std::string("*--") + plainText(option.name) + "*";
        heading += option.argument == nullptr ? "" : std::string(" _") + option.argument + "_";
        text += (text.empty() ? "" : "\n") + entry(heading, option.meaning);
    }
    return text;
}

std::string settingsOf() {
    std::string text;
    for (const SettingRow& row : settingTable) {
        if (isForUsers(row)) {
            text += text.empty() ? "" : "\n";
            text += entry(std::string("*") + row.key + "*=" + plainText(defaultText(row)), description(row));
        }
    }
    return text;
}

void fillIn(std::string& page, std::string_view mark, std::string_view text) {
    const std::size_t at = page.find(mark);
    if (at != std::string::npos) {
        page.replace(at, mark.size(), text);
    }
}

std::string withoutLineEnd(std::string text) {
    if (text.ends_with('\n')) {
        text.pop_back();
    }
    return text;
}

} // namespace

std::string manualPage(const ProgramTable& program, std::string_view page) {
    std::string filled(page);
    fillIn(filled, "@PURPOSE@", program.purpose);
    fillIn(filled, "@SYNOPSIS@", synopsisOf(program));
    fillIn(filled, "@OPTIONS@", withoutLineEnd(optionsOf(program)));
    fillIn(filled, "@SETTINGS@", withoutLineEnd(settingsOf()));
    if (program.command.word != nullptr) {
        fillIn(filled, "@COMMAND@", withoutLineEnd(optionsOf(program.command.table())));
    }
    return filled;
}

} // namespace tarnwick
