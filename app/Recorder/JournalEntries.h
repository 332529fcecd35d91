// How entries for the journal join those that are there, as in the journal itself.
#pragma once

#include "core/History/History.h"
#include "platform/ports/Journal.h"

#include <string>
#include <vector>

namespace tarnwick::JournalEntries {

/// Adds to the period of the same start and length, if there is one.
void put(std::vector<Period>& periods, const Period& period);
/// Takes the place of the episode of the same kind and start, if there is one.
void put(std::vector<Episode>& episodes, const Episode& episode);
/// Takes the place of the gap of the same kind and start, if there is one.
void put(std::vector<Gap>& gaps, const Gap& gap);

/// Into the history of `host`: of another host's batch only the gaps. The order is lost.
void put(History& history, const std::string& host, const Journal::Batch& batch);

/// False when there is none of the same kind and start.
bool remove(std::vector<Episode>& episodes, const Episode& episode);
bool remove(std::vector<Gap>& gaps, const Gap& gap);

} // namespace tarnwick::JournalEntries
