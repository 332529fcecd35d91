// A journal in memory, which fails when it is told to.
#pragma once

#include "platform/ports/Journal.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick::simulation {

class RecordingJournal final : public Journal {
public:
    State open() override {
        ++opened;
        return state_;
    }

    [[nodiscard]] State state() const override { return state_; }

    [[nodiscard]] std::string problem() const override {
        if (state_ == State::newerFile) {
            return "it is of a newer version";
        }
        return state_ == State::cannotWrite ? "no space" : "";
    }

    [[nodiscard]] std::optional<HistoryTime> until() override { return until_; }

    [[nodiscard]] bool wasCleared() override { return wasCleared_; }

    bool write(const Batch& batch) override {
        if (state_ != State::writes) {
            return false;
        }
        wasCleared_ = false;
        batches.push_back(batch);
        until_ = batch.until;
        for (const Period& minute : batch.minutes) {
            minutes_[batch.host][minute.start].merge(minute.figures);
        }
        for (const Episode& episode : batch.episodes) {
            episodes_[batch.host][{episode.start, episode.kind}] = episode;
        }
        for (const Gap& gap : batch.gaps) {
            gaps_[{gap.span.from, gap.kind}] = gap;
        }
        return true;
    }

    /// Everything, whatever the span.
    [[nodiscard]] History read(const std::string& host, const Span& span) override {
        wanted.push_back(span);
        History history{.until = until_.value_or(HistoryTime{})};
        for (const auto& [start, figures] : minutes_[host]) {
            history.periods.push_back({.start = start, .figures = figures});
        }
        for (const auto& [key, episode] : episodes_[host]) {
            history.episodes.push_back(episode);
        }
        for (const auto& [key, gap] : gaps_) {
            history.gaps.push_back(gap);
        }
        return history;
    }

    [[nodiscard]] std::vector<std::string> hosts() override {
        std::set<std::string> names;
        for (const auto& [host, minutes] : minutes_) {
            if (!minutes.empty()) {
                names.insert(host);
            }
        }
        for (const auto& [host, episodes] : episodes_) {
            if (!episodes.empty()) {
                names.insert(host);
            }
        }
        return {names.begin(), names.end()};
    }

    bool clear() override {
        minutes_.clear();
        episodes_.clear();
        gaps_.clear();
        until_.reset();
        return !clearingFails;
    }

    void clearByAnother() {
        static_cast<void>(clear());
        wasCleared_ = true;
    }

    void setState(State state) { state_ = state; }

    void setUntil(std::optional<HistoryTime> until) { until_ = until; }

    int opened = 0;
    bool clearingFails = false;
    std::vector<Batch> batches;
    std::vector<Span> wanted; ///< by each reading

private:
    State state_ = State::writes;
    bool wasCleared_ = false;
    std::optional<HistoryTime> until_;
    std::map<std::string, std::map<HistoryTime, PeriodFigures>> minutes_;
    std::map<std::string, std::map<std::pair<HistoryTime, Episode::Kind>, Episode>> episodes_;
    std::map<std::pair<HistoryTime, Gap::Kind>, Gap> gaps_;
};

} // namespace tarnwick::simulation
