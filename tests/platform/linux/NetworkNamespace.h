// A network of the test's own, empty at first, in which it may change what it likes.
#pragma once

#include "core/FileDescriptor.h"

#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <net/if.h>
#include <sched.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace tarnwick::test {

/// The calling thread is in it until the end. Each goes away with the last of its sockets and processes.
class NetworkNamespace {
public:
    NetworkNamespace()
        : home_(::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC)),
          isEntered_(::unshare(CLONE_NEWNET) == 0 || enterAsOrdinaryUser()) {}

    NetworkNamespace(const NetworkNamespace&) = delete;
    NetworkNamespace& operator=(const NetworkNamespace&) = delete;

    ~NetworkNamespace() {
        if (isEntered_) {
            ::setns(home_.get(), CLONE_NEWNET);
        }
    }

    [[nodiscard]] bool isEntered() const { return isEntered_; }

    /// Lets `ip`, with such an option, carry out the commands, one a line; true when all went well.
    [[nodiscard]] static bool ip(const std::string& commands, const std::string& option = "") {
        FILE* const input = ::popen(("ip " + option + " -batch -").c_str(), "w");
        if (input == nullptr) {
            return false;
        }
        std::fputs((commands + "\n").c_str(), input);
        return ::pclose(input) == 0;
    }

    /// A cable with both ends in here; NAME is up, and has a carrier while NAMEfar is up. The system gives
    /// them no addresses of its own, so nothing changes but what the test changes.
    [[nodiscard]] static bool addLink(const std::string& name) {
        const std::string far = name + "far";
        return ip("link add " + name + " type veth peer name " + far + "\nlink set dev " + name
                  + " addrgenmode none\nlink set dev " + far + " addrgenmode none\nlink set dev " + far
                  + " up\nlink set dev " + name + " up")
               && hasComeUp(far) && hasComeUp(name);
    }

    /// The system finds a carrier a moment after it is there, and tells of it then.
    static bool hasComeUp(const std::string& interface) {
        const FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        ifreq request{};
        interface.copy(&request.ifr_name[0], sizeof request.ifr_name - 1);
        const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (::ioctl(socket.get(), SIOCGIFFLAGS, &request) == 0
               && std::chrono::steady_clock::now() < patience) {
            if ((request.ifr_flags & IFF_RUNNING) != 0) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    }

private:
    /// Such a user is root in a user namespace; only a process with one thread can go there.
    static bool enterAsOrdinaryUser() {
        const std::string user = std::to_string(::geteuid());
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
            return false;
        }
        return (std::ofstream("/proc/self/uid_map") << "0 " << user << " 1").flush().good();
    }

    FileDescriptor home_;
    bool isEntered_;
};

} // namespace tarnwick::test
