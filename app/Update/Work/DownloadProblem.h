// What users are told of a download that failed.
#pragma once

#include "platform/ports/Downloader.h"

#include <string>

namespace tarnwick {

/// With the system's own words in brackets, where there are any.
[[nodiscard]] std::string sentence(const Downloader::Failure& failure);

/// Whether the server was there; else there may be no network.
[[nodiscard]] bool hasAnswered(Downloader::Problem problem);

/// Whether the same download may do better at another time: the file itself is not what is wrong.
[[nodiscard]] bool mayPass(Downloader::Problem problem);

} // namespace tarnwick
