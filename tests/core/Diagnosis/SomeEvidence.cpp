#include "tests/core/Diagnosis/SomeEvidence.h"

namespace tarnwick::test {

namespace {

double usualMs(std::size_t hop) {
    return 2 + 4 * static_cast<double>(hop);
}

} // namespace

std::vector<HopSample> samples(std::size_t answered, std::size_t lost, double ms) {
    std::vector<HopSample> all(lost, HopSample{});
    all.resize(lost + answered, HopSample{.ms = ms});
    return all;
}

Evidence quiet() {
    Evidence evidence{
        .host = "one.example",
        .address = hostAddress,
        .pings = samples(10, 0, usualMs(hostHop)),
        .quietMs = usualMs(hostHop),
        .link = LinkEvidence{.interface = "eth0", .kind = LinkEvidence::Kind::wired},
        .router = router,
        .neighbor = NeighborState::reachable};
    for (const std::string& address : {router, firstOfProvider, lastOfProvider, hostsRouter, hostAddress}) {
        const double usual = usualMs(evidence.hops.size());
        evidence.hops.push_back(
            {.address = address,
             .isHost = address == hostAddress,
             .quietShare = 1,
             .quietMs = usual,
             .samples = samples(3, 0, usual)});
    }
    return evidence;
}

Evidence downFrom(std::size_t hop, std::size_t probes) {
    Evidence evidence = quiet();
    evidence.trouble = Trouble::down;
    evidence.silentSeconds = 14;
    evidence.pings = samples(0, 10, 0);
    for (std::size_t number = 0; number < evidence.hops.size(); ++number) {
        const bool isBehind = number >= hop;
        evidence.hops[number].samples =
            samples(isBehind ? 0 : probes, isBehind ? probes : 0, usualMs(number));
    }
    return evidence;
}

Evidence lossyFrom(std::size_t hop, std::size_t lostOfTen) {
    Evidence evidence = quiet();
    evidence.trouble = Trouble::degraded;
    evidence.pings = samples(3 * (10 - lostOfTen), 3 * lostOfTen, usualMs(hostHop));
    for (std::size_t number = 0; number < evidence.hops.size(); ++number) {
        const std::size_t lost = number >= hop ? lostOfTen : 0;
        evidence.hops[number].samples = samples(10 - lost, lost, usualMs(number));
    }
    return evidence;
}

Evidence lateFrom(std::size_t hop, double extraMs) {
    Evidence evidence = quiet();
    evidence.trouble = Trouble::degraded;
    evidence.pings = samples(10, 0, usualMs(hostHop) + extraMs);
    for (std::size_t number = hop; number < evidence.hops.size(); ++number) {
        evidence.hops[number].samples = samples(3, 0, usualMs(number) + extraMs);
    }
    return evidence;
}

} // namespace tarnwick::test
