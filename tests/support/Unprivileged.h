// The rights of an ordinary user, for tests of what such a one may not do.
#pragma once

#include <array>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tarnwick::test {

/// Permissions hold for this thread, also where it is root's. Nothing changes where they do anyway.
class Unprivileged {
public:
    Unprivileged() {
        if (::syscall(SYS_capget, &header_, before_.data()) != 0) {
            return;
        }
        auto fewer = before_;
        fewer[0].effective &= ~(mask(CAP_DAC_OVERRIDE) | mask(CAP_DAC_READ_SEARCH));
        isOrdinary_ = ::syscall(SYS_capset, &header_, fewer.data()) == 0;
    }

    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

    ~Unprivileged() {
        if (isOrdinary_) {
            ::syscall(SYS_capset, &header_, before_.data());
        }
    }

    /// False where the system does not let go of them.
    [[nodiscard]] bool isOrdinary() const { return isOrdinary_; }

private:
    static constexpr __u32 mask(unsigned capability) { return __u32{1} << capability; }

    __user_cap_header_struct header_{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> before_{};
    bool isOrdinary_ = false;
};

} // namespace tarnwick::test
