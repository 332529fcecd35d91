// Which hop of the path is probed next, and what the hops have answered.
#pragma once

#include "core/Diagnosis/Evidence.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

/// Told what happens and when, in monotonic seconds; sends nothing itself. At most one probe a second is due.
///
/// While all is well the path is learnt once. Later, while it is watched, only hops are probed that have
/// answered before, in turn; where the way to the host was never learnt, all up to the second silent one in a
/// row.
class PathTrace {
public:
    static constexpr int mostHops = 12;
    static constexpr double interval = 1; ///< seconds between two probes
    static constexpr double patience = 2; ///< seconds after which an answer no longer comes

    struct Probe {
        std::uint64_t id;
        int hopLimit;
    };

    /// Ids count up from this one, so that answers to an earlier trace are not taken for its own.
    explicit PathTrace(std::uint64_t firstId) : nextId_(firstId) {}

    /// Forgets the path and learns it: three probes of each hop.
    void learn(double now);
    /// Something has been wrong `since` then: goes on until `rest`.
    void watch(double now, double since);
    void rest();

    /// Whether `probe` will want to be asked again at `nextProbeAt`.
    [[nodiscard]] bool isActive() const { return mode_ != Mode::resting; }

    [[nodiscard]] bool isWatching() const { return mode_ == Mode::watching; }

    /// Whether the host has answered a probe since the path was forgotten last.
    [[nodiscard]] bool reachesHost() const { return hostAt_.has_value(); }

    [[nodiscard]] double nextProbeAt() const { return nextProbeAt_; }

    /// The probe to send now; nothing before `nextProbeAt`, and when all has been learnt.
    [[nodiscard]] std::optional<Probe> probe(double now);

    /// `sender`: a router that the hop limit ended at, or the host. Ignored are unknown ids, second answers
    /// and, while the path is watched, senders that were not at that hop while all was well: a forger's
    /// answer must not speak for it.
    void answered(std::uint64_t id, const std::string& sender, bool isHost, double at);

    /// Whether a stranger has answered in the place of a hop: the way may be another one by now. Who answers
    /// at several hops is no router of a new way.
    [[nodiscard]] bool hasChanged() const;

    /// The path, with the samples of the probes that were sent from `since` on and have been answered or can
    /// no longer be. It ends at the host if the way there was learnt, or if the host lies behind `mostHops`:
    /// then with a hop of no address in place of all those between.
    [[nodiscard]] std::vector<HopEvidence> hops(double since, double now) const;

private:
    enum class Mode { resting, learning, watching };
    static constexpr int quietProbes = 3; ///< of each hop

    struct Sample {
        std::uint64_t id = 0;
        int hopLimit = 0;
        double sentAt = 0;
        std::optional<double> ms = std::nullopt;
        bool isQuiet = false;   ///< sent while all was well
        std::string stranger{}; ///< who answered, and was ignored
    };

    struct Hop {
        std::string address;
        std::vector<std::string> quietSenders{}; ///< who has answered while all was well
        int probes = 0;                          ///< in this mode
    };

    [[nodiscard]] std::optional<int> nextToLearn() const;
    [[nodiscard]] std::optional<int> nextToWatch() const;
    [[nodiscard]] bool hasAnswered(int hopLimit) const;
    [[nodiscard]] bool isFromNewWay(const Sample& sample) const;
    [[nodiscard]] HopEvidence evidenceOf(int hopLimit, double since, double now) const;
    [[nodiscard]] int lastHop() const;

    Mode mode_ = Mode::resting;
    std::vector<Hop> hops_ = std::vector<Hop>(mostHops);
    std::optional<int> hostAt_; ///< the hop limit at which the host answers
    std::deque<Sample> samples_;
    std::uint64_t nextId_;
    double nextProbeAt_ = 0;
};

} // namespace tarnwick
