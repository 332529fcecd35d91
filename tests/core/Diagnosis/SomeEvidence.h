// Evidence of a path over a home router, two of the provider's and one of the host's.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tarnwick::test {

inline const std::string router = "192.0.2.1";
inline const std::string firstOfProvider = "198.51.100.1";
inline const std::string lastOfProvider = "198.51.100.7";
inline const std::string hostsRouter = "203.0.113.1";
inline const std::string hostAddress = "203.0.113.9";

/// Places of hops on that path.
inline constexpr std::size_t routerHop = 0, firstProviderHop = 1, lastProviderHop = 2, hostsRouterHop = 3,
                             hostHop = 4;

/// The first ones are lost.
std::vector<HopSample> samples(std::size_t answered, std::size_t lost, double ms);

/// All is well: each hop takes 4 ms more than the one before, from 2 ms.
Evidence quiet();

/// Everything from a hop on is lost, `probes` of each hop; the host's pings, too.
Evidence downFrom(std::size_t hop, std::size_t probes = 3);

/// From that hop on, `lostOfTen` of each hop's ten samples are lost. So is the same share of thirty pings.
Evidence lossyFrom(std::size_t hop, std::size_t lostOfTen);

/// From a hop on all answers are so late.
Evidence lateFrom(std::size_t hop, double extraMs);

} // namespace tarnwick::test
