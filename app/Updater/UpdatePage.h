// What the update window shows, as values.
#pragma once

#include "app/Update/UpdateState.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

struct UpdatePage {
    enum class Action { install, skip, remindLater, cancel, dismiss, restart };

    struct Button {
        std::string label; ///< with "&" before the letter of its shortcut
        Action action;

        friend bool operator==(const Button&, const Button&) = default;
    };

    struct Progress {
        std::uint64_t done = 0;
        std::uint64_t whole = 0; ///< 0: unknown

        friend bool operator==(const Progress&, const Progress&) = default;
    };

    std::string title;
    std::string text;
    std::string notes{}; ///< Markdown
    std::optional<Progress> progress = std::nullopt;
    std::vector<Button> buttons{}; ///< the last one is the default
    Action whenClosed = Action::dismiss;
    bool isAlert = false; ///< needs no more than to be read

    friend bool operator==(const UpdatePage&, const UpdatePage&) = default;
};

/// None where there is nothing to show.
[[nodiscard]] std::optional<UpdatePage> pageOf(const UpdateState& state, const ReleaseVersion& running);

} // namespace tarnwick
