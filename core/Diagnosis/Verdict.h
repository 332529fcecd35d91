// Whose fault it is that the connection is bad.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick {

enum class Blame {
    thisComputer,
    wifi,
    localNetwork,
    provider,
    beyondProvider,
    host,
    nameServer,
    signIn,  ///< the network wants the user to sign in
    ownLoad, ///< the line is full with this computer's own traffic
    unclear,
};

enum class Likelihood { possible, likely, certain };

struct Verdict {
    Blame blame = Blame::unclear;
    Likelihood likelihood = Likelihood::possible;
    std::string evidence{}; ///< one sentence for the user

    friend bool operator==(const Verdict&, const Verdict&) = default;
};

/// The evidence of a verdict that says nothing.
inline constexpr const char* notClearYet = "What is wrong is not clear yet.";

/// As programs read them: "localNetwork", "likely".
[[nodiscard]] std::string_view nameOf(Blame blame);
[[nodiscard]] std::string_view nameOf(Likelihood likelihood);
/// Back from these names; `unclear` and `possible` for every other text.
[[nodiscard]] Blame blameNamed(std::string_view name);
[[nodiscard]] Likelihood likelihoodNamed(std::string_view name);

} // namespace tarnwick
