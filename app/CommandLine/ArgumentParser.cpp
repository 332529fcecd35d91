#include "app/CommandLine/ArgumentParser.h"

namespace tarnwick {

std::vector<std::string> argumentsOf(int argc, const char* const* argv) {
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

ArgumentParser::ArgumentParser(const std::vector<std::string>& arguments, std::span<const option> known)
    : arguments_(arguments), known_(known) {
    pointers_.push_back(name_.data());
    for (std::string& argument : arguments_) {
        pointers_.push_back(argument.data());
    }
    pointers_.push_back(nullptr);
    optind = 0; // start again: the process may have parsed another command line before
    opterr = 0;
}

int ArgumentParser::next() {
    const int count = static_cast<int>(pointers_.size()) - 1;
    const int found = getopt_long(count, pointers_.data(), ":h", known_.data(), nullptr);
    // The library returns the same for an unknown option and for an unwanted value; only the value has an
    // option.
    return found == '?' && optopt >= firstOption ? unwantedValue : found;
}

std::string ArgumentParser::culprit() const {
    if (optopt > 0 && optopt < firstOption) {
        return {'-', static_cast<char>(optopt)};
    }
    const auto position = static_cast<std::size_t>(optind) - 1;
    const std::string argument = position < pointers_.size() - 1 ? pointers_[position] : "";
    return optopt >= firstOption ? argument.substr(0, argument.find('=')) : argument;
}

std::vector<std::string> ArgumentParser::rest() const {
    return {pointers_.begin() + optind, pointers_.end() - 1};
}

} // namespace tarnwick
