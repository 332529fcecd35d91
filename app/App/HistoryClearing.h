// Clears the history, after asking.
#pragma once

#include "app/Monitor/Monitor.h"
#include "app/SettingsView/Model/SettingsModel.h"
#include "app/StatusItemController/StatusItemController.h"
#include "core/Lifeline.h"

#include <functional>

namespace tarnwick {

/// Main thread.
class HistoryClearing {
public:
    using Ask = std::function<void(const Question& question, std::function<void(bool)> answered)>;

    /// Monitor and settings outlive it; their action is set here.
    HistoryClearing(Monitor& monitor, SettingsModel& settings, Ask ask);

    HistoryClearing(const HistoryClearing&) = delete;
    HistoryClearing& operator=(const HistoryClearing&) = delete;
    ~HistoryClearing();

private:
    void askToClear();
    void clear();

    Monitor& monitor_;
    SettingsModel& settings_;
    Ask ask_;
    Lifeline lifeline_;
};

} // namespace tarnwick
