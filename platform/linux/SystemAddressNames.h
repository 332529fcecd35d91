// Names of numeric addresses, from the system's resolver.
#pragma once

#include "core/Lifeline.h"
#include "core/RunLoop.h"
#include "platform/ports/AddressNames.h"

#include <functional>
#include <string>
#include <utility>

namespace tarnwick {

/// Each question waits on a detached thread.
class SystemAddressNames final : public AddressNames {
public:
    /// Any thread.
    using Lookup = std::function<std::string(const std::string& address)>;

    /// The name that the resolver tells, if it has only letters, digits, dashes and dots. May block.
    [[nodiscard]] static std::string lookUp(const std::string& address);

    explicit SystemAddressNames(RunLoop& loop, Lookup lookup = lookUp)
        : loop_(loop), lookup_(std::move(lookup)) {}

    void ask(const std::string& address, Answer answer) override;

private:
    RunLoop& loop_;
    Lookup lookup_;
    Lifeline lifeline_;
};

} // namespace tarnwick
