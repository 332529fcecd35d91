// The journal's file: how it is opened, made anew, and put aside when it is broken.
#pragma once

#include "platform/journal/Database.h"
#include "platform/ports/Journal.h"

#include <filesystem>
#include <memory>
#include <string>

namespace tarnwick::JournalFile {

struct Opened {
    std::unique_ptr<Database> database = nullptr; ///< only to write to it
    Journal::State state = Journal::State::cannotWrite;
    std::string problem{};             ///< why it can't be written to
    std::filesystem::path brokenOne{}; ///< where a broken one was put; empty when there was none
};

/// Opens it to write, checked and with the present tables. A missing one is made, for this user alone; its
/// folder is there. A broken one makes room for a new one. One of a newer version of the program stays as it
/// is. The caller holds the lock.
[[nodiscard]] Opened openToWrite(const std::filesystem::path& file);

/// Beside whoever writes; not open where there is none.
[[nodiscard]] Database openToRead(const std::filesystem::path& file);

/// Whether anything of it is there, if only the log beside it.
[[nodiscard]] bool isThere(const std::filesystem::path& file);
/// With its log. False when something is left; what is no regular file stays. The caller holds the lock.
bool remove(const std::filesystem::path& file);
/// Removes the broken ones that were put aside. False when one is left.
bool removeBrokenOnes(const std::filesystem::path& file);

} // namespace tarnwick::JournalFile
