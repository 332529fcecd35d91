// A message bus of a test's own, which may be stopped and started again.
#pragma once

#include "core/FileDescriptor.h"

#include <string>
#include <sys/types.h>

namespace tarnwick {

class PrivateBus {
public:
    /// Not running yet.
    PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    ~PrivateBus();

    /// Returns when it takes connections; false when it does not come up.
    [[nodiscard]] bool start();
    void stop();

    /// From the next start on, no program may own that name.
    void refuse(const std::string& name);

    /// From the next start or `reload` on, the daemon refuses this call of its own; none: it answers all.
    void refuseCall(const std::string& method);
    void reload() const;

    /// From now on the daemon reads nothing and answers nothing.
    void hang() const;

    /// The same for each start.
    [[nodiscard]] std::string address() const { return "unix:path=" + folder_ + "/bus"; }

    /// A socket beside the bus that takes connections and never answers, while the descriptor is open.
    [[nodiscard]] FileDescriptor listenSilently() const;

    [[nodiscard]] std::string silentAddress() const { return address() + "-silent"; }

private:
    void configure(const std::string& rule) const;
    [[nodiscard]] bool takesConnections() const;

    std::string folder_;
    pid_t daemon_ = 0;
};

} // namespace tarnwick
