#include "platform/journal/JournalFile.h"

#include "core/FileDescriptor.h"
#include "platform/journal/JournalSchema.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>

namespace tarnwick::JournalFile {

namespace {

namespace fs = std::filesystem;

// The main thread waits for no other process for long: it tries again a minute later.
constexpr int writerPatienceMs = 100;
constexpr int readerPatienceMs = 1000;
constexpr int mostBrokenOnes = 99;

/// What is in the file that was opened.
enum class Content { ours, newer, broken, unknown };

fs::path withEnding(const fs::path& file, const std::string& ending) {
    fs::path other = file;
    other += ending;
    return other;
}

std::string systemProblem() {
    return std::strerror(errno);
}

/// Makes the file if it is missing, and takes from it every permission of others. Returns the problem, if
/// there is one.
std::string makeReady(const fs::path& file) {
    // Without waiting, in case it is a pipe.
    const FileDescriptor opened(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600));

    struct stat info{};

    if (!opened.isOpen() || ::fstat(opened.get(), &info) != 0) {
        return systemProblem();
    }
    if (!S_ISREG(info.st_mode)) {
        return "not a regular file";
    }
    if ((info.st_mode & 077) != 0) {
        static_cast<void>(::fchmod(opened.get(), info.st_mode & 0700)); // not every file system has them
    }
    return {};
}

Content contentWithout(const std::optional<std::string>& verdict, const Database& database) {
    if (verdict) {
        return *verdict == "ok" ? Content::ours : Content::broken;
    }
    return database.fault() == Database::Fault::broken ? Content::broken : Content::unknown;
}

Content contentOf(Database& database) {
    const auto version = JournalSchema::versionOf(database);
    if (!version) {
        return contentWithout(std::nullopt, database);
    }
    if (*version > JournalSchema::version) {
        return Content::newer;
    }
    const Content checked = contentWithout(database.text("PRAGMA quick_check(1)"), database);
    return checked != Content::ours || JournalSchema::hasTablesOf(database, *version) ? checked
                                                                                      : Content::broken;
}

/// Readers go on beside the writer; a commit does not wait for the disk; what is deleted is overwritten.
bool configure(Database& database) {
    return database.execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                            "PRAGMA secure_delete = ON; PRAGMA temp_store = MEMORY");
}

std::string today() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    std::array<char, 16> text{};
    static_cast<void>(std::strftime(text.data(), text.size(), "%Y-%m-%d", &local));
    return text.data();
}

/// "journal.sqlite.broken-2026-11-23", or the same with "-2" and so on.
fs::path freeName(const fs::path& file) {
    const fs::path first = withEnding(file, ".broken-" + today());
    fs::path name = first;
    std::error_code ignored;
    for (int number = 2; number <= mostBrokenOnes && fs::exists(name, ignored); ++number) {
        name = withEnding(first, "-" + std::to_string(number));
    }
    return name;
}

/// With what was not moved into it yet. Returns its new name; empty when it is still in its place.
fs::path putAside(const fs::path& file) {
    fs::path name = freeName(file);
    std::error_code error;
    fs::rename(file, name, error);
    if (error) {
        return {};
    }
    const fs::path log = withEnding(file, "-wal");
    if (fs::file_size(log, error) > 0 && !error) {
        fs::rename(log, withEnding(name, "-wal"), error);
    }
    fs::remove(log, error);
    fs::remove(withEnding(file, "-shm"), error);
    return name;
}

/// The file as it is. `isBroken` tells that another one should be begun.
Opened openPresent(const fs::path& file, bool& isBroken) {
    if (std::string problem = makeReady(file); !problem.empty()) {
        return {.problem = std::move(problem)};
    }
    auto database = std::make_unique<Database>(file, Database::Access::write, writerPatienceMs);
    database->setMovesOnClose(false);
    const Content content = contentOf(*database);
    isBroken = content == Content::broken;
    if (content == Content::newer) {
        return {.state = Journal::State::newerFile, .problem = "a newer version of Tarnwick has written it"};
    }
    if (content != Content::ours || !configure(*database) || !JournalSchema::prepare(*database)) {
        return {.problem = database->problem()};
    }
    database->setMovesOnClose(true);
    return {.database = std::move(database), .state = Journal::State::writes};
}

} // namespace

Opened openToWrite(const fs::path& file) {
    bool isBroken = false;
    Opened opened = openPresent(file, isBroken);
    if (!isBroken) {
        return opened;
    }
    const fs::path brokenOne = putAside(file);
    if (brokenOne.empty()) {
        return opened;
    }
    opened = openPresent(file, isBroken);
    opened.brokenOne = brokenOne;
    return opened;
}

Database openToRead(const fs::path& file) {
    return {file, Database::Access::read, readerPatienceMs};
}

bool isThere(const fs::path& file) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(file, ignored)) || fs::exists(withEnding(file, "-wal"), ignored);
}

bool remove(const fs::path& file) {
    std::error_code error;
    const fs::file_status status = fs::symlink_status(file, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        return false;
    }
    bool isGone = true;
    for (const char* ending : {"-wal", "-shm", ""}) { // the log first: the next file must not find it
        fs::remove(withEnding(file, ending), error);
        isGone = isGone && !error;
    }
    return isGone;
}

bool removeBrokenOnes(const fs::path& file) {
    const std::string beginning = file.filename().string() + ".broken-";
    std::error_code error;
    bool areGone = true;
    for (const fs::directory_entry& entry : fs::directory_iterator(file.parent_path(), error)) {
        if (entry.path().filename().string().starts_with(beginning)) {
            areGone = fs::remove(entry.path(), error) && areGone;
        }
    }
    return areGone;
}

} // namespace tarnwick::JournalFile
