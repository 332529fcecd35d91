#include "app/App/HistoryClearing.h"

#include <utility>

namespace tarnwick {

HistoryClearing::HistoryClearing(Monitor& monitor, SettingsModel& settings, Ask ask)
    : monitor_(monitor), settings_(settings), ask_(std::move(ask)) {
    settings_.clearHistory = [this] { askToClear(); };
}

HistoryClearing::~HistoryClearing() {
    settings_.clearHistory = nullptr;
}

void HistoryClearing::askToClear() {
    settings_.setHistoryProblem("");
    const Question question{
        .title = "Clear History",
        .text = "Are you sure you want to clear the history of all hosts?",
        .note =
            "Its latencies, losses, outages and gaps are removed from this computer for good. The session "
            "and all time stats stay.",
        .confirm = "Clear",
        .cancel = "Cancel",
    };
    ask_(question, lifeline_.guarded([this](bool isSure) {
        if (isSure) {
            clear();
        }
    }));
}

void HistoryClearing::clear() {
    if (!monitor_.clearHistory()) {
        settings_.setHistoryProblem(
            "Something of it may be left: the disk is full or write-protected, or another program reads it.");
    }
}

} // namespace tarnwick
