// Whether the host's name is what is wrong, and not the way to it.
#pragma once

#include "app/Diagnostician/RepeatedQuestion.h"
#include "app/Diagnostician/Situation.h"
#include "core/Diagnosis/AddressProbes.h"
#include "core/Diagnosis/Evidence.h"
#include "core/ResolvedAddress.h"
#include "platform/ports/NameServerCheck.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tarnwick {

/// Each name server is asked once for each lookup of the host's name that fails or is late, at most every
/// five seconds, and once when the host's last address answers again. While the name can't be found, that
/// address is to be probed once a second in place of the pings. A late lookup counts for half a minute. Main
/// thread.
class NameInquiry {
public:
    /// `servers` outlives it. Ids of probes count up from the one given.
    NameInquiry(NameServerCheck& servers, std::uint64_t firstProbe);

    /// Once a second. `last`: the address by which the host was reached, if it can be probed. Returns the id
    /// of the probe to send to it now.
    [[nodiscard]] std::optional<std::uint64_t> tick(
        const Situation& situation, const std::optional<ResolvedAddress>& last);

    /// The host answered a probe; unknown ids are ignored.
    void answered(std::uint64_t id, double at) { lastAddress_.answered(id, at); }

    /// Other name servers are used, or another name.
    void forgetServers();

    void forgetAddress();

    [[nodiscard]] bool hasBadServer() const;
    /// Adds what is known, of probes those sent from `since` on. `isOnlyNameBad`: nothing but the lookup of
    /// the name is wrong.
    void addTo(
        Evidence& evidence, const Situation& situation, const std::optional<ResolvedAddress>& last,
        double since, bool isOnlyNameBad) const;

private:
    void askServers(const Situation& situation, std::int32_t family);
    [[nodiscard]] bool isWayBack(double now);

    NameServerCheck& check_;
    RepeatedQuestion<std::vector<NameServerEvidence>> servers_;
    std::optional<double> askedFor_; ///< when the lookup began for which they were asked last
    AddressProbes lastAddress_;
    std::optional<bool> lastAddressAnswered_; ///< as of the last tick
};

} // namespace tarnwick
