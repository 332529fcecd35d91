// The names of a path's hops.
#pragma once

#include "core/Diagnosis/Evidence.h"
#include "core/Lifeline.h"
#include "platform/ports/AddressNames.h"

#include <map>
#include <string>
#include <vector>

namespace tarnwick {

/// Asked for one after the other, each once. Main thread.
class HopNames {
public:
    /// It outlives this object.
    explicit HopNames(AddressNames& names) : names_(names) {}

    HopNames(const HopNames&) = delete;
    HopNames& operator=(const HopNames&) = delete;

    /// Puts in the names that are known, and asks for the next one that is not.
    void fill(std::vector<HopEvidence>& path);
    /// Asks again for names that were not found: perhaps the resolver could not be reached.
    void retryUnknown();
    /// Another network may have other names for the same addresses.
    void forget();

private:
    void ask(const std::string& address);

    AddressNames& names_;
    std::map<std::string, std::string> known_; ///< by address; empty: there is none
    bool isAsking_ = false;
    unsigned network_ = 0; ///< rises when another one is used
    Lifeline lifeline_;
};

} // namespace tarnwick
