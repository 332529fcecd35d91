// Names of numeric addresses.
#pragma once

#include <functional>
#include <string>

namespace tarnwick {

/// Main thread.
class AddressNames {
public:
    /// Empty where the address has none, or nobody could be asked.
    using Answer = std::function<void(const std::string& name)>;

    AddressNames() = default;
    AddressNames(const AddressNames&) = delete;
    AddressNames& operator=(const AddressNames&) = delete;
    virtual ~AddressNames() = default;

    /// Asks the system's resolver, which may ask this machine's name servers and take a minute over it.
    /// `answer` is called once, never inside this call, nor when this object has ended.
    virtual void ask(const std::string& address, Answer answer) = 0;
};

} // namespace tarnwick
