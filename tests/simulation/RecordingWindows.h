// The windows that a status item opens, counted instead of shown.
#pragma once

#include "app/StatusItemController/StatusItemController.h"

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace tarnwick::simulation {

class RecordingWindows final : public StatusItemWindows {
public:
    void toggleDropDown(std::optional<ScreenPoint> at) override { dropDowns.push_back(at); }

    void showOutages() override { ++outagesShown; }

    void showSettings() override { ++settingsShown; }

    void showAbout() override { ++aboutShown; }

    void expectWindow() override { ++windowsExpected; }

    void ask(const Question& question, std::function<void(bool)> answered) override {
        questions.push_back(question);
        answer = std::move(answered);
    }

    void quit() override { ++quits; }

    std::vector<std::optional<ScreenPoint>> dropDowns;
    int outagesShown = 0;
    int settingsShown = 0;
    int aboutShown = 0;
    int windowsExpected = 0;
    int quits = 0;
    std::vector<Question> questions;
    std::function<void(bool)> answer; ///< to the latest question
};

} // namespace tarnwick::simulation
