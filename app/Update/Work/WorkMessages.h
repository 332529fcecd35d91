// What a program and the process that does an update's work for it say to each other: a JSON object a line.
#pragma once

#include "app/Update/UpdateWork.h"
#include "core/Update/ReleaseVersion.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace tarnwick {

/// To the process. It knows the source of updates itself.
struct DownloadOrder {
    std::string feed; ///< as `UpdateWork::VerifiedFeed` has it
    ReleaseVersion version;
};

/// From the process.
using WorkMessage =
    std::variant<UpdateWork::CheckResult, UpdateWork::Received, UpdateWork::Complete, UpdateWork::Ended>;

/// Without a line break.
[[nodiscard]] std::string encoded(const DownloadOrder& order);
[[nodiscard]] std::string encoded(const WorkMessage& message);

/// Nothing for any other text.
[[nodiscard]] std::optional<DownloadOrder> decodedOrder(const std::string& line);
[[nodiscard]] std::optional<WorkMessage> decodedMessage(const std::string& line);

} // namespace tarnwick
