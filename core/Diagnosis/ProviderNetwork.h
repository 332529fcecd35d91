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

/// Addresses that homes use and providers hardly ever: a second router of the user's own may have one.
[[nodiscard]] bool isHomeAddress(const std::string& address);

/// The index behind the provider's last hop. Its hops begin after the router, and go on while addresses are
/// internal, unknown, or of the first public one's network. The host is never one of them. At least 1.
[[nodiscard]] std::size_t endOfProvider(const std::vector<HopEvidence>& hops);

/// Whether the first public address is the provider's for sure enough: not behind two hops or more that never
/// answer.
[[nodiscard]] bool isProviderKnown(const std::vector<HopEvidence>& hops);

} // namespace tarnwick
