#include "platform/xdg/MenuEntry.h"

#include "core/Storage/FileStore.h"
#include "core/Text.h"
#include "platform/ports/ApplicationId.h"
#include "platform/xdg/DesktopCommand.h"
#include "platform/xdg/DesktopEntry.h"

#include <algorithm>
#include <system_error>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

constexpr auto themeFolder = "icons/hicolor";
constexpr auto programKey = "TryExec";
/// Set in the entry that this class writes.
constexpr auto ownKey = "X-Tarnwick-Bundle";

fs::path entryBelow(const fs::path& data) {
    return data / "applications" / (std::string(applicationId) + ".desktop");
}

fs::path iconBelow(const fs::path& data) {
    return data / themeFolder / "scalable/apps" / (std::string(applicationId) + ".svg");
}

std::string failureAt(const fs::path& file, const std::error_code& error) {
    return "Can’t change " + file.string() + ": " + error.message();
}

/// The command line with the program's path in the place of its name.
std::string withPath(const std::string& command, const fs::path& program) {
    const std::size_t nameEnd = std::min(command.find(' '), command.size());
    const std::string option(Text::trimmed(std::string_view(command).substr(nameEnd)));
    return std::string(Text::trimmed(DesktopCommand::starting(program, option)));
}

std::optional<std::string> copyText(const fs::path& from, const fs::path& to) {
    std::error_code error;
    const auto text = FileStore::read(from, error);
    if (!text) {
        return "Can’t read " + from.string() + ": " + error.message();
    }
    error = FileStore::replace(to, *text, FileStore::Durability::crash);
    return error ? std::optional(failureAt(to, error)) : std::nullopt;
}

} // namespace

fs::path MenuEntry::userEntry() const {
    return entryBelow(places_.userData);
}

fs::path MenuEntry::userIcon() const {
    return iconBelow(places_.userData);
}

bool MenuEntry::isInMenu() const {
    const auto has = [](const fs::path& data) {
        std::error_code error;
        return fs::exists(entryBelow(data), error);
    };
    return has(places_.userData) || std::ranges::any_of(places_.systemFolders, has);
}

std::optional<fs::path> MenuEntry::startedProgram() const {
    std::error_code error;
    const auto text = FileStore::read(userEntry(), error);
    const auto entry = text ? DesktopEntry::parse(*text) : std::nullopt;
    return entry && entry->value(ownKey) ? entry->value(programKey) : std::nullopt;
}

std::optional<std::string> MenuEntry::add() const {
    std::error_code error;
    const fs::path model = entryBelow(places_.share);
    const auto text = FileStore::read(model, error);
    auto entry = text ? DesktopEntry::parse(*text) : std::nullopt;
    if (!entry) {
        return "Can’t read " + model.string();
    }
    entry->changeEverywhere(
        "Exec", [this](const std::string& command) { return withPath(command, places_.program); });
    entry->set(programKey, places_.program.native());
    entry->set(ownKey, "true");
    if (const auto failure = copyText(iconBelow(places_.share), userIcon())) {
        return failure;
    }
    touchTheme();
    error = FileStore::replace(userEntry(), entry->text(), FileStore::Durability::crash);
    return error ? std::optional(failureAt(userEntry(), error)) : std::nullopt;
}

std::optional<std::string> MenuEntry::remove() const {
    if (!startedProgram()) {
        return std::nullopt;
    }
    for (const fs::path& file : {userIcon(), userEntry()}) {
        std::error_code error;
        fs::remove(file, error);
        if (error) {
            return failureAt(file, error);
        }
    }
    touchTheme();
    return std::nullopt;
}

void MenuEntry::touchTheme() const {
    std::error_code ignored;
    fs::last_write_time(places_.userData / themeFolder, fs::file_time_type::clock::now(), ignored);
}

} // namespace tarnwick
