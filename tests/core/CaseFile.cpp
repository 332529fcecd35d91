#include "tests/core/CaseFile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace tarnwick::test {

namespace {

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;) {
        words.push_back(std::move(word));
    }
    return words;
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

[[noreturn]] void refuse(const std::filesystem::path& file, std::size_t line, const std::string& why) {
    throw std::runtime_error(file.string() + ":" + std::to_string(line) + ": " + why);
}

void readStep(
    const std::string& text, const std::filesystem::path& path, std::size_t line, std::vector<Case>& cases) {
    const std::size_t arrow = text.find("->");
    const std::vector<std::string> words = wordsOf(text.substr(0, arrow));
    if (words.empty()) {
        return;
    }
    if (words.front() == "case" && words.size() == 2) {
        cases.push_back({words[1], path, {}});
    } else if (cases.empty()) {
        refuse(path, line, "a step before the first case");
    } else {
        const std::string expected = arrow == std::string::npos ? std::string() : text.substr(arrow + 2);
        cases.back().steps.push_back({line, words, joined(wordsOf(expected))});
    }
}

} // namespace

double CaseStep::number(std::size_t index) const {
    std::istringstream in(word(index));
    double value = 0;
    if (!(in >> value) || !in.eof()) {
        ADD_FAILURE() << "line " << line << ": no number: \"" << word(index) << "\"";
    }
    return value;
}

std::string CaseStep::word(std::size_t index) const {
    return index < words.size() ? words[index] : std::string();
}

std::vector<Case> readCases(const std::string& fileName) {
    const std::filesystem::path path = std::filesystem::path(TARNWICK_CASES) / fileName;
    std::ifstream in(path);
    std::vector<Case> cases;
    std::size_t line = 0;
    for (std::string text; std::getline(in, text);) {
        ++line;
        std::istringstream steps(text.substr(0, text.find('#')));
        for (std::string step; std::getline(steps, step, ';');) {
            readStep(step, path, line, cases);
        }
    }
    if (cases.empty()) {
        refuse(path, line, "no case");
    }
    return cases;
}

std::string place(const Case& tested, const CaseStep& step) {
    return tested.file.string() + ":" + std::to_string(step.line) + ": " + joined(step.words);
}

} // namespace tarnwick::test
