// Gathers evidence while the connection is bad, and says whose fault it is.
#pragma once

#include "app/Diagnostician/HopNames.h"
#include "app/Diagnostician/NameInquiry.h"
#include "app/Diagnostician/RepeatedQuestion.h"
#include "app/Diagnostician/Situation.h"
#include "core/Diagnosis/LineLoad.h"
#include "core/Diagnosis/PathTrace.h"
#include "core/Diagnosis/RouterWords.h"
#include "core/Diagnosis/SteadyVerdict.h"
#include "core/Lifeline.h"
#include "core/Prober/ProbeNetwork.h"
#include "core/ResolvedAddress.h"
#include "core/RunLoop.h"
#include "platform/ports/AddressNames.h"
#include "platform/ports/ConnectivityCheck.h"
#include "platform/ports/LinkInspector.h"
#include "platform/ports/NameServerCheck.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// Whom the evidence comes from.
struct DiagnosisSources {
    ProbeNetwork& probes;
    LinkInspector& link;
    NameServerCheck& nameServers;
    ConnectivityCheck& connectivity;
    AddressNames& addressNames;
};

/// While all is well it learns the path once, and again after `pathChanged`; otherwise it sends nothing.
/// While the host is silent or its answers are bad, and for half a minute after trouble, it probes a hop a
/// second; while its name can't be found, its last address once a second in place of the pings, and each name
/// server once for each lookup that fails. While a verdict stands, it looks up the names of the hops, each
/// once. Main thread.
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
    void follow(const Situation& situation);
    void forgetAddress();
    void turnTo(const ResolvedAddress& address);
    void relax(const Situation& situation);
    void noteTrouble(const Situation& situation, bool areBarsWell);
    [[nodiscard]] std::optional<Verdict> presentVerdict(const Situation& situation) const;
    void probeName(const Situation& situation);
    void watch(const Situation& situation);
    void inspectLink();
    void linkInspected(const std::optional<LinkState>& state);
    void scheduleProbe();
    void sendProbe();
    void receive();
    [[nodiscard]] Evidence evidenceOf(const Situation& situation) const;
    [[nodiscard]] std::optional<ResolvedAddress> addressToProbe() const;
    [[nodiscard]] double troubleSince(const Situation& situation) const;

    RunLoop& loop_;
    DiagnosisSources sources_;
    PathTrace trace_;
    NameInquiry name_;
    HopNames hopNames_;
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
    double changedAt_ = 0;           ///< when the path did
    std::optional<double> badSince_; ///< when a tick first told of trouble
    std::optional<double> lastBad_;  ///< when one last did, on this path
    std::optional<double> usualMs_;  ///< as of the last tick before the trouble
    std::optional<double> lastReply_;
    RouterWords words_;
    std::optional<LinkState> linkState_; ///< since the trouble began
    LineLoad load_;
    RunLoop::Handle timer_;
    Lifeline lifeline_;
};

} // namespace tarnwick
