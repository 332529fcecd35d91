#include "platform/xdg/AutostartEntry.h"

#include "core/Storage/FileStore.h"
#include "core/Storage/UserFolders.h"
#include "platform/ports/ApplicationId.h"
#include "platform/xdg/DesktopCommand.h"
#include "platform/xdg/PresentDesktop.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

namespace Key {
constexpr auto type = "Type";
constexpr auto name = "Name";
constexpr auto exec = "Exec";
constexpr auto tryExec = "TryExec";
constexpr auto onlyShowIn = "OnlyShowIn";
constexpr auto notShowIn = "NotShowIn";
constexpr auto hidden = "Hidden";
constexpr auto gnomeEnabled = "X-GNOME-Autostart-enabled";
/// Set when the program, and not the desktop, has hidden the entry.
constexpr auto withdrawn = "X-Tarnwick-Withdrawn";
} // namespace Key

constexpr auto application = "Application";

fs::path entryIn(const fs::path& settingsFolder) {
    return settingsFolder / "autostart" / (std::string(applicationId) + ".desktop");
}

std::string failure(const fs::path& file, const std::error_code& error) {
    return "Can’t change " + file.string() + ": " + error.message();
}

void removeSwitches(DesktopEntry& entry) {
    entry.remove(Key::hidden);
    entry.remove(Key::gnomeEnabled);
    entry.remove(Key::withdrawn);
}

/// The entry that is written where there is none.
DesktopEntry newEntry(std::string_view program, std::string_view command) {
    DesktopEntry entry;
    entry.set(Key::type, application);
    entry.set(Key::name, "Tarnwick");
    entry.set("Comment", "Keeps an eye on your internet connection from the panel");
    entry.set("Icon", applicationId);
    entry.set(Key::tryExec, program);
    entry.set(Key::exec, command);
    entry.setBoolean("Terminal", false);
    return entry;
}

/// Whether this program wrote the entry's command line. Earlier versions wrote it without the option.
bool hasOurCommand(const DesktopEntry& entry) {
    const std::string ours =
        DesktopCommand::starting(entry.value(Key::tryExec).value_or(""), AutostartEntry::fromSession);
    const auto command = entry.value(Key::exec);
    const std::string withoutOption =
        ours.substr(0, ours.size() - std::string_view(AutostartEntry::fromSession).size() - 1);
    return command == ours || command == withoutOption;
}

bool holdsNothingElse(DesktopEntry entry) {
    removeSwitches(entry);
    const auto program = entry.value(Key::tryExec);
    const auto command = entry.value(Key::exec);
    return program && command && hasOurCommand(entry) && entry == newEntry(*program, *command);
}

/// Nothing, and no error, when the file is not a desktop entry.
std::optional<DesktopEntry> read(const fs::path& file, std::error_code& error) {
    const auto text = FileStore::read(file, error);
    return text ? DesktopEntry::parse(*text) : std::nullopt;
}

/// The condition is the program that TryExec names: the entry starts only where that is found.
bool hasWorkingCondition(const DesktopEntry& entry) {
    const auto condition = entry.value(Key::tryExec);
    return condition && !condition->empty() && DesktopCommand::find(*condition);
}

/// The program that the entry's command line starts, or the script or other program that does.
std::optional<fs::path> startedFile(const DesktopEntry& entry) {
    const auto command = entry.value(Key::exec);
    const auto name = command ? DesktopCommand::program(*command) : std::nullopt;
    return name ? DesktopCommand::find(*name) : std::nullopt;
}

bool isAbsent(const std::error_code& error) {
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

} // namespace

AutostartEntry::AutostartEntry(std::optional<fs::path> program, Session session)
    : program_(std::move(program)), session_(std::move(session)) {
}

AutostartEntry::Session AutostartEntry::presentSession() {
    return {
        .userFolder = UserFolders::config(),
        .systemFolders = UserFolders::systemConfig(),
        .desktops = PresentDesktop::names()};
}

fs::path AutostartEntry::userFile() const {
    return entryIn(session_.userFolder);
}

std::optional<DesktopEntry> AutostartEntry::systemEntry() const {
    for (const fs::path& folder : session_.systemFolders) {
        std::error_code error;
        auto entry = read(entryIn(folder), error);
        if (!isAbsent(error)) {
            return entry;
        }
    }
    return std::nullopt;
}

LoginItem::Status AutostartEntry::status() const {
    std::error_code error;
    const auto own = read(userFile(), error);
    if (isAbsent(error)) {
        const auto ofSystem = systemEntry();
        return ofSystem ? statusOf(*ofSystem) : Status::notRegistered;
    }
    if (!own) {
        return Status::notRegistered;
    }
    const Status found = statusOf(*own);
    return found == Status::enabled && startsAnotherCopy(*own) ? Status::notRegistered : found;
}

LoginItem::Status AutostartEntry::statusOf(const DesktopEntry& entry) const {
    const bool isHidden = entry.boolean(Key::hidden).value_or(false);
    if (isHidden && entry.boolean(Key::withdrawn).value_or(false)) {
        return Status::notRegistered;
    }
    if (isHidden || !entry.boolean(Key::gnomeEnabled).value_or(true)) {
        return Status::requiresApproval;
    }
    return startsHere(entry) ? Status::enabled : Status::notRegistered;
}

bool AutostartEntry::startsHere(const DesktopEntry& entry) const {
    const auto tryExec = entry.value(Key::tryExec);
    const bool mayTry = !tryExec || tryExec->empty() || DesktopCommand::find(*tryExec);
    return entry.value(Key::type) == application && mayTry && startedFile(entry) && isForThisDesktop(entry);
}

bool AutostartEntry::hasWorkingCommand(const DesktopEntry& entry) const {
    return startedFile(entry) && !startsAnotherCopy(entry);
}

/// Only where that is certain: an entry that names a script or another program may still start this one.
bool AutostartEntry::startsAnotherCopy(const DesktopEntry& entry) const {
    const auto file = startedFile(entry);
    std::error_code error;
    return program_ && file && file->filename() == program_->filename()
           && !fs::equivalent(*file, *program_, error);
}

bool AutostartEntry::isForThisDesktop(const DesktopEntry& entry) const {
    const auto only = entry.list(Key::onlyShowIn);
    const auto excluded = entry.list(Key::notShowIn);
    const auto holds = [](const auto& list, const std::string& desktop) {
        return list && std::ranges::find(*list, desktop) != list->end();
    };
    for (const std::string& desktop : session_.desktops) {
        if (holds(only, desktop)) {
            return true;
        }
        if (holds(excluded, desktop)) {
            return false;
        }
    }
    return !only;
}

std::optional<std::string> AutostartEntry::enroll() {
    if (!program_) {
        return "Can’t tell where this program is";
    }
    std::error_code error;
    auto entry = read(userFile(), error);
    if (!entry && !error) {
        error = FileStore::keepAside(userFile()); // no desktop entry
    }
    if (error && !isAbsent(error)) {
        return failure(userFile(), error);
    }
    const std::string command = DesktopCommand::starting(*program_, fromSession);
    if (!entry) {
        return write(newEntry(program_->native(), command));
    }
    removeSwitches(*entry);
    const bool keepsCommand = !hasOurCommand(*entry) && hasWorkingCommand(*entry);
    const bool keepsCondition = keepsCommand && hasWorkingCondition(*entry);
    entry->set(Key::type, application);
    if (!keepsCondition) {
        entry->set(Key::tryExec, program_->native());
    }
    if (!keepsCommand) {
        entry->set(Key::exec, command);
    }
    if (!isForThisDesktop(*entry)) {
        entry->remove(Key::onlyShowIn);
        entry->remove(Key::notShowIn);
    }
    return write(*entry);
}

std::optional<std::string> AutostartEntry::follow(const fs::path& former) const {
    std::error_code error;
    auto entry = read(userFile(), error);
    if (!program_ || !entry || entry->value(Key::tryExec) != former.native() || !hasOurCommand(*entry)) {
        return std::nullopt;
    }
    entry->set(Key::tryExec, program_->native());
    entry->set(Key::exec, DesktopCommand::starting(*program_, fromSession));
    return write(*entry);
}

std::optional<std::string> AutostartEntry::withdraw() {
    if (status() == Status::notRegistered) {
        return std::nullopt;
    }
    std::error_code error;
    auto entry = read(userFile(), error);
    auto ofSystem = systemEntry();
    if (entry && !ofSystem && holdsNothingElse(*entry)) {
        fs::remove(userFile(), error);
        return error ? std::optional(failure(userFile(), error)) : std::nullopt;
    }
    if (!entry) {
        entry = std::move(ofSystem);
    }
    if (entry) {
        entry->setBoolean(Key::hidden, true);
        entry->setBoolean(Key::withdrawn, true);
        return write(*entry);
    }
    return std::nullopt;
}

std::optional<std::string> AutostartEntry::write(const DesktopEntry& entry) const {
    const std::error_code error = FileStore::replace(userFile(), entry.text());
    return error ? std::optional(failure(userFile(), error)) : std::nullopt;
}

} // namespace tarnwick
