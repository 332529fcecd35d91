// Gathers evidence while the connection is bad, and says whose fault it is.
#pragma once

#include "app/Diagnostician/RepeatedQuestion.h"
#include "core/Diagnosis/AddressProbes.h"
#include "core/Diagnosis/PathTrace.h"
#include "core/Diagnosis/SteadyVerdict.h"
#include "core/Lifeline.h"
#include "core/PendingPing.h"
#include "core/PingError.h"
#include "core/Prober/ProbeNetwork.h"
#include "core/ResolvedAddress.h"
#include "core/RunLoop.h"
#include "platform/ports/ConnectivityCheck.h"
#include "platform/ports/LinkInspector.h"
#include "platform/ports/NameServerCheck.h"

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// A lookup of the host's name. Times in monotonic seconds.
struct Lookup {
    double begun = 0;
    std::optional<double> ended = std::nullopt; ///< with an address or without; nothing: it goes on
};

/// What pinging has brought so far, at one tick. Times in monotonic seconds.
struct Situation {
    double now = 0;
    Trouble trouble = Trouble::none;
    std::string host{};
    std::optional<ResolvedAddress> address{}; ///< that is pinged
    std::optional<PingError> startError{};
    std::optional<Lookup> lookup = std::nullopt;  ///< the latest
    std::vector<PendingPing> pings{};             ///< of the scoring window, oldest first
    std::optional<double> usualMs = std::nullopt; ///< the host's median over the last minutes
};

/// Whom the evidence comes from.
struct DiagnosisSources {
    ProbeNetwork& probes;
    LinkInspector& link;
    NameServerCheck& nameServers;
    ConnectivityCheck& connectivity;
};

/// While all is well it learns the path once, and again after `pathChanged`; otherwise it sends nothing.
/// While the host is silent or its answers are bad, it probes a hop a second; while its name can't be found,
/// its last address once a second in place of the pings, and each name server every five seconds. Main
/// thread.
class Diagnostician {
public:
    /// All outlive it.
    Diagnostician(RunLoop& loop, const DiagnosisSources& sources);

    Diagnostician(const Diagnostician&) = delete;
    Diagnostician& operator=(const Diagnostician&) = delete;

    /// Once a second.
    void tick(const Situation& told);
    /// The machine uses another network, or pings another host: the path has to be learnt anew.
    void pathChanged();

    /// As of the last tick; nothing while all is well.
    [[nodiscard]] const std::optional<Verdict>& verdict() const { return steady_.shown(); }

    /// The hops by which the verdict was found; empty while all is well.
    [[nodiscard]] const std::vector<HopEvidence>& path() const { return path_; }

private:
    /// What the interface has carried, at a time.
    struct Traffic {
        std::uint64_t sentBytes;
        std::uint64_t receivedBytes;
        double at;
    };

    struct Word {
        std::string sender;
        double at;
    };

    void follow(const Situation& situation);
    void forgetAddress();
    void turnTo(const ResolvedAddress& address);
    void rest(const Situation& situation);
    void noteTrouble(const Situation& situation, bool isOnlyLate);
    [[nodiscard]] std::optional<Verdict> presentVerdict(const Situation& situation) const;
    void lookIntoName(const Situation& situation);
    [[nodiscard]] static bool isNameMissing(const Situation& situation);
    [[nodiscard]] static bool wasFoundLate(const Situation& situation);
    [[nodiscard]] bool hasBadNameServer() const;
    [[nodiscard]] bool isLate(const Situation& situation) const;
    [[nodiscard]] bool isSuspicious(const Situation& situation) const;
    void watch(const Situation& situation);
    void inspectLink();
    void linkInspected(const std::optional<LinkState>& state);
    void noteTraffic(const LinkState& state, double now);
    void scheduleProbe();
    void sendProbe();
    void receive();
    [[nodiscard]] Evidence evidenceOf(const Situation& situation) const;
    void addName(const Situation& situation, Evidence& evidence) const;
    [[nodiscard]] std::vector<UnreachableEvidence> recentWords(double now) const;
    [[nodiscard]] double troubleSince(const Situation& situation) const;
    [[nodiscard]] static double silentSince(const Situation& situation);

    RunLoop& loop_;
    DiagnosisSources sources_;
    PathTrace trace_;
    AddressProbes lastAddress_;
    RepeatedQuestion<std::vector<NameServerEvidence>> nameServers_;
    RepeatedQuestion<Connectivity> connectivity_;
    bool isOnlyNameBad_ = false; ///< so far, nothing but the lookup of the name is wrong
    SteadyVerdict steady_;
    std::vector<HopEvidence> path_;
    std::string host_;
    std::optional<ResolvedAddress> address_; ///< that answers, or the first one
    std::optional<ResolvedAddress> pinged_;  ///< as of the last tick
    double pingedSince_ = 0;
    std::unique_ptr<ProbeSocket> socket_;
    bool hasLearnt_ = false;         ///< or is learning
    std::optional<double> badSince_; ///< when a tick first told of trouble
    std::optional<double> usualMs_;  ///< as of the last tick before the trouble
    std::optional<double> lastReply_;
    std::deque<Word> words_;             ///< of routers, that the host can't be reached
    std::optional<LinkState> linkState_; ///< since the trouble began
    std::optional<Traffic> traffic_;
    LoadEvidence load_;
    RunLoop::Handle timer_;
    Lifeline lifeline_;
};

} // namespace tarnwick
