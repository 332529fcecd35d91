// What is known of a connection at one moment. Whatever could not be found out is absent.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

enum class Trouble { none, degraded, down };

/// The interface that leads to the internet, or would.
struct LinkEvidence {
    enum class Kind { wired, wifi, mobile, tunnel, other };

    std::string interface{}; ///< its name; empty: this machine has none
    Kind kind = Kind::other;
    bool isUp = true;       ///< switched on
    bool hasCarrier = true; ///< a cable or a radio network is there
    bool hasAddress = true;
    bool hasRoute = true; ///< a way to the internet
    std::string source{}; ///< the own address that what is sent to the host has; empty: not known
    // Of Wi-Fi:
    std::optional<int> signalDbm = std::nullopt;
    std::optional<double> rateMbit = std::nullopt; ///< a second, at which it sends
};

/// What the kernel knows of the router's hardware address.
enum class NeighborState { unknown, reachable, failed };

/// What came back for one echo request to the host, whose hop limit it was.
struct HopSample {
    std::optional<double> ms = std::nullopt; ///< nothing: lost

    friend bool operator==(const HopSample&, const HopSample&) = default;
};

struct HopEvidence {
    std::string address{}; ///< that answered; empty: none has
    std::string name{};    ///< of that address; empty: it has none, or it is not known yet
    bool isHost = false;
    double quietShare = 0; ///< of the requests while all was well, how many were answered
    std::optional<double> quietMs = std::nullopt; ///< median while all was well
    std::vector<HopSample> samples{};             ///< since things went wrong, oldest first

    friend bool operator==(const HopEvidence&, const HopEvidence&) = default;
};

struct NameServerEvidence {
    /// From the worst on.
    enum class Answer {
        none,
        failed, ///< it could not find out, perhaps because others do not answer it
        refused,
        noSuchName, ///< or no address of that name
        found,
    };

    std::string address{};
    Answer answer = Answer::none;
    std::optional<double> ms = std::nullopt;
};

/// What the system's network service found out. Of what it tells besides a portal, the path tells more, and
/// now.
enum class Connectivity { unknown, portal };

/// The interface's own traffic over the last seconds.
struct LoadEvidence {
    double sentMbit = 0;     ///< a second
    double receivedMbit = 0; ///< a second
    double seconds = 0;      ///< for how long it has been like this
};

/// What a router says of a ping of ours that it does not pass on.
enum class RouterWord {
    unreachable, ///< the host, its network or the way there is not available
    forbidden,   ///< a rule of its own
};

struct UnreachableEvidence {
    std::string sender{};
    int count = 0;
    RouterWord word = RouterWord::unreachable; ///< the latest
};

struct Evidence {
    Trouble trouble = Trouble::none;
    std::string host{};                           ///< as the user names it
    std::optional<std::string> address{};         ///< that is pinged
    double silentSeconds = 0;                     ///< since the host's last answer
    std::optional<std::string> socketError{};     ///< why nothing can be sent, in the system's words
    bool isNameMissing = false;                   ///< the name can't be resolved, or not in time
    bool isNameLate = false;                      ///< it was found late, and nothing else is wrong
    std::vector<HopSample> pings{};               ///< since things went wrong, oldest first
    double lossBefore = 0;                        ///< the share of pings that were lost before those, 0 to 1
    std::optional<double> quietMs = std::nullopt; ///< the host's median while all was well
    std::optional<LinkEvidence> link = std::nullopt;
    std::optional<std::string> router{};
    NeighborState neighbor = NeighborState::unknown; ///< of the router
    std::vector<HopEvidence> hops{}; ///< by hop limit, from 1; the last one is the host if it is known
    bool hasPathChanged = false;     ///< some of these hops may no longer be on the way
    std::vector<NameServerEvidence> nameServers{};
    std::optional<std::string> lastAddress{}; ///< of the host, from an earlier lookup
    std::optional<bool> lastAddressAnswers{};
    Connectivity connectivity = Connectivity::unknown;
    LoadEvidence load{};
    std::vector<UnreachableEvidence> unreachable{};
};

} // namespace tarnwick
