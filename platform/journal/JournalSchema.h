// The journal's tables, and how those of an older version of the program become the present ones.
#pragma once

#include "platform/journal/Database.h"

#include <cstdint>

namespace tarnwick::JournalSchema {

/// The number of the present tables. A file with a higher one is of a newer version of the program.
inline constexpr std::int64_t version = 1;

/// That of the file; nothing when it can't be read.
[[nodiscard]] std::optional<std::int64_t> versionOf(Database& database);

/// Whether the tables of this version are there; for version 0, whether none are.
[[nodiscard]] bool hasTablesOf(Database& database, std::int64_t found);

/// Makes the tables, or makes older ones to the present ones, in one transaction. False after a failure.
bool prepare(Database& database);

} // namespace tarnwick::JournalSchema
