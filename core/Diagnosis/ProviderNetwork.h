// Which hops of a path are the internet provider's, as far as addresses tell.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tarnwick {

/// Whether two numeric addresses lie in one network of a provider's size: the first 16 bits of IPv4, 32 of
/// IPv6.
[[nodiscard]] bool isSameNetwork(const std::string& one, const std::string& other);

/// Addresses that do not lead through the internet: private, shared by a provider's users, or link-local.
[[nodiscard]] bool isInternalAddress(const std::string& address);

/// Addresses that a machine gives itself where its network gives it none. They lead nowhere else.
[[nodiscard]] bool isSelfAssigned(const std::string& address);

/// Whether the hop behind the home's router may be a second router at home. Its address is one that homes use
/// and providers hardly ever; or another internal one, not of those for a provider's users, and it usually
/// answers as soon as the first router.
[[nodiscard]] bool mayBeAtHome(const HopEvidence& second, const HopEvidence& first);

/// The index behind the provider's last hop. Its hops begin after the router, and go on while addresses are
/// internal, unknown, or of the first public one's network. The host is never one of them. At least 1.
[[nodiscard]] std::size_t endOfProvider(const std::vector<HopEvidence>& hops);

/// Whether the first public address is the provider's for sure enough: not behind two hops or more that never
/// answer.
[[nodiscard]] bool isProviderKnown(const std::vector<HopEvidence>& hops);

} // namespace tarnwick
