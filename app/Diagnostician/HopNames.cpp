#include "app/Diagnostician/HopNames.h"

namespace tarnwick {

void HopNames::fill(std::vector<HopEvidence>& path) {
    for (HopEvidence& hop : path) {
        const auto found = known_.find(hop.address);
        if (found != known_.end()) {
            hop.name = found->second;
        } else if (!isAsking_ && !hop.address.empty()) {
            ask(hop.address);
        }
    }
}

/// An answer that another network's servers gave is dropped, and asked for again.
void HopNames::ask(const std::string& address) {
    isAsking_ = true;
    names_.ask(address, lifeline_.guarded([this, address, network = network_](const std::string& name) {
        isAsking_ = false;
        if (network == network_) {
            known_[address] = name;
        }
    }));
}

void HopNames::retryUnknown() {
    std::erase_if(known_, [](const auto& entry) { return entry.second.empty(); });
}

void HopNames::forget() {
    known_.clear();
    ++network_;
}

} // namespace tarnwick
