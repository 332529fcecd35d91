// The portal through which a sandboxed program notifies. It knows which program calls, and shows that
// program's name and icon.
#pragma once

#include "core/Lifeline.h"
#include "platform/bus/BusConnection.h"
#include "platform/bus/NotificationService.h"

#include <cstdint>

namespace tarnwick {

class NotificationPortal final : public NotificationService {
public:
    /// `bus` is the session's and outlives it.
    explicit NotificationPortal(BusConnection& bus);

    [[nodiscard]] const std::string& busName() const override { return name_; }

    void probe(double timeout, std::function<void(bool isThere)> answered) override;
    void show(const std::string& title, const std::string& body) override;

private:
    [[nodiscard]] BusConnection::Call call(const char* interface, const char* method) const;

    BusConnection& bus_;
    std::string name_ = "org.freedesktop.portal.Desktop";
    std::uint32_t version_ = 0;
    std::string run_; ///< a part of each notification's id that differs from run to run
    std::uint64_t shown_ = 0;
    Lifeline lifeline_;
};

} // namespace tarnwick
