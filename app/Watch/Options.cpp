#include "app/Watch/Options.h"

#include "app/Preferences/Preferences.h"
#include "core/Text.h"

#include <array>
#include <cmath>
#include <getopt.h>
#include <string_view>

namespace tarnwick {

namespace {

enum class SettingType { host, positiveNumber, number, boolean, lossMode };

struct SettingRule {
    std::string_view key;
    SettingType type;
    std::string_view expected; ///< completes "KEY must be ..."
};

/// Four times what the name system allows: room for a scope and for other notations.
constexpr std::size_t longestHost = 1024;

constexpr std::string_view trueOrFalse = "true or false";

constexpr std::array settingRules{
    SettingRule{PreferenceKey::hostname, SettingType::host, "a host name or address"},
    SettingRule{PreferenceKey::pingTimeout, SettingType::positiveNumber, "a number of seconds above 0"},
    SettingRule{PreferenceKey::pingInterval, SettingType::number, "a number of seconds"},
    SettingRule{
        PreferenceKey::slowPingLowThreshold, SettingType::positiveNumber, "a number of milliseconds above 0"},
    SettingRule{PreferenceKey::showIcon, SettingType::boolean, trueOrFalse},
    SettingRule{PreferenceKey::showText, SettingType::boolean, trueOrFalse},
    SettingRule{PreferenceKey::showNotifications, SettingType::boolean, trueOrFalse},
    SettingRule{PreferenceKey::packetLossTextMode, SettingType::lossMode, "off, whenLossy or always"},
    SettingRule{PreferenceKey::showPacketLossText, SettingType::boolean, trueOrFalse},
};

std::optional<double> finiteNumber(const std::string& text) {
    const std::optional<double> number = Text::parseNumber(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<double> positiveNumber(const std::string& text) {
    const std::optional<double> number = finiteNumber(text);
    return number && *number > 0 ? number : std::nullopt;
}

std::optional<UserDefaults::Value> valueOf(SettingType type, const std::string& text) {
    switch (type) {
    case SettingType::host: {
        const std::string_view host = Text::trimmed(text);
        const bool isPlausible = !host.empty() && host.size() <= longestHost;
        return isPlausible ? std::optional<UserDefaults::Value>(std::string(host)) : std::nullopt;
    }
    case SettingType::positiveNumber:
        return positiveNumber(text);
    case SettingType::number:
        return finiteNumber(text);
    case SettingType::boolean:
        return text == "true" || text == "false" ? std::optional<UserDefaults::Value>(text == "true")
                                                 : std::nullopt;
    case SettingType::lossMode:
        break;
    }
    return MenuBarTitle::lossMode(text) ? std::optional<UserDefaults::Value>(text) : std::nullopt;
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    result += Text::printable(text);
    result += '"';
    return result;
}

/// The C library's parser over a copy of the arguments: it wants them writable, and a name in front.
class ArgumentParser {
public:
    explicit ArgumentParser(const std::vector<std::string>& arguments) : arguments_(arguments) {
        pointers_.push_back(name_.data());
        for (std::string& argument : arguments_) {
            pointers_.push_back(argument.data());
        }
        pointers_.push_back(nullptr);
        optind = 0; // begin anew, also when this is not the first command line of the process
        opterr = 0;
    }

    static constexpr int endOfOptions = -1;

    /// Beyond all letters, so that an option and a letter are never mistaken for each other.
    enum Letter : int { json = 256, forSeconds, set, help, version };

    /// The next option's letter, '?' for an unknown one, ':' for a missing value.
    int next() {
        static constexpr std::array<option, 6> known{{
            {"json", no_argument, nullptr, json},
            {"for", required_argument, nullptr, forSeconds},
            {"set", required_argument, nullptr, set},
            {"help", no_argument, nullptr, help},
            {"version", no_argument, nullptr, version},
            {nullptr, 0, nullptr, 0},
        }};
        return getopt_long(count(), pointers_.data(), ":", known.data(), nullptr);
    }

    [[nodiscard]] static std::string value() { return optarg; }

    /// What the latest complaint is about: a single letter, or else the whole argument.
    [[nodiscard]] std::string culprit() const {
        if (optopt > 0 && optopt < json) {
            return {'-', static_cast<char>(optopt)};
        }
        const auto position = static_cast<std::size_t>(optind) - 1;
        return position < pointers_.size() - 1 ? pointers_[position] : "";
    }

    [[nodiscard]] std::vector<std::string> rest() const {
        return {pointers_.begin() + optind, pointers_.end() - 1};
    }

private:
    [[nodiscard]] int count() const { return static_cast<int>(pointers_.size()) - 1; }

    std::string name_ = "tarnwick-watch";
    std::vector<std::string> arguments_;
    std::vector<char*> pointers_;
};

std::optional<UsageError> apply(int letter, const ArgumentParser& parser, WatchOptions& options) {
    switch (letter) {
    case ArgumentParser::json:
        options.json = true;
        return std::nullopt;
    case ArgumentParser::help:
        options.help = true;
        return std::nullopt;
    case ArgumentParser::version:
        options.version = true;
        return std::nullopt;
    case ArgumentParser::forSeconds:
        options.forSeconds = positiveNumber(ArgumentParser::value());
        if (!options.forSeconds) {
            return UsageError{
                "--for takes a number of seconds above 0, not " + quoted(ArgumentParser::value())};
        }
        return std::nullopt;
    case ArgumentParser::set: {
        auto setting = parseSetting(ArgumentParser::value());
        if (auto* error = std::get_if<UsageError>(&setting)) {
            return *error;
        }
        options.settings.push_back(std::get<0>(std::move(setting)));
        return std::nullopt;
    }
    case ':':
        return UsageError{parser.culprit() + " needs a value"};
    default:
        return UsageError{"unknown option " + quoted(parser.culprit())};
    }
}

} // namespace

const char* WatchOptions::usage() {
    return "usage: tarnwick-watch [--json] [--for SECONDS] [--set KEY=VALUE]... [HOST]\n"
           "\n"
           "Watches the quality of the internet connection by pinging one host.\n"
           "\n"
           "  HOST             host name or address to ping, for this run only\n"
           "  --json           print one JSON object a line, at once and then every second\n"
           "  --for SECONDS    stop after so many seconds\n"
           "  --set KEY=VALUE  a setting for this run only; may be repeated\n"
           "  --help           show this text\n"
           "  --version        show the version\n"
           "\n"
           "Settings and their defaults:\n"
           "  Hostname=1.1.1.1                host name or address to ping\n"
           "  PingInterval=1                  seconds between pings, 1 to 60\n"
           "  PingTimeout=4                   seconds after which a ping is lost\n"
           "  SlowPingLowThreshold=100        milliseconds from which a ping is slow\n"
           "  PacketLossTextMode=whenLossy    off, whenLossy or always\n"
           "  ShowIcon=true  ShowText=true    what the status item shows\n"
           "  ShowNotifications=false         notify of down and restored (not in the terminal yet)\n"
           "\n"
           "In a terminal it draws a screen: q or Ctrl-C ends it. Elsewhere it prints one line a second.\n";
}

std::variant<std::pair<std::string, UserDefaults::Value>, UsageError> parseSetting(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) {
        return UsageError{"--set takes KEY=VALUE, not " + quoted(text)};
    }
    const std::string key = text.substr(0, equals);
    for (const SettingRule& rule : settingRules) {
        if (rule.key != key) {
            continue;
        }
        const std::string written = text.substr(equals + 1);
        if (auto value = valueOf(rule.type, written)) {
            return std::pair(key, std::move(*value));
        }
        return UsageError{key + " must be " + std::string(rule.expected) + ", not " + quoted(written)};
    }
    return UsageError{"unknown setting " + quoted(key)};
}

std::variant<WatchOptions, UsageError> parseWatchOptions(const std::vector<std::string>& arguments) {
    WatchOptions options;
    ArgumentParser parser(arguments);
    for (int letter = parser.next(); letter != ArgumentParser::endOfOptions; letter = parser.next()) {
        if (auto error = apply(letter, parser, options)) {
            return std::move(*error);
        }
    }
    const std::vector<std::string> hosts = parser.rest();
    if (hosts.size() > 1) {
        return UsageError{"only one HOST can be watched, not also " + quoted(hosts[1])};
    }
    for (const std::string& host : hosts) {
        const auto value = valueOf(SettingType::host, host);
        if (!value) {
            return UsageError{"HOST must be a host name or address, not " + quoted(host)};
        }
        options.settings.emplace_back(PreferenceKey::hostname, *value);
    }
    return options;
}

} // namespace tarnwick
