#include "tests/platform/bus/PrivateBus.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tarnwick {

namespace {

std::string temporaryFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "tarnwick-bus-XXXXXX";
    return mkdtemp(pattern.data()) == nullptr ? std::string() : pattern;
}

sockaddr_un socketAddress(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
    return address;
}

} // namespace

PrivateBus::PrivateBus() : folder_(temporaryFolder()) {
    configure("");
}

void PrivateBus::refuse(const std::string& name) {
    configure("<deny own='" + name + "'/>");
}

void PrivateBus::refuseCall(const std::string& method) {
    configure(
        method.empty() ? "" : "<deny send_interface='org.freedesktop.DBus' send_member='" + method + "'/>");
}

void PrivateBus::reload() const {
    kill(daemon_, SIGHUP);
}

void PrivateBus::hang() const {
    kill(daemon_, SIGSTOP);
    waitpid(daemon_, nullptr, WUNTRACED);
}

void PrivateBus::configure(const std::string& rule) const {
    std::ofstream(folder_ + "/bus.conf") << "<busconfig><type>session</type><listen>" << address()
                                         << "</listen><auth>EXTERNAL</auth><policy context='default'>"
                                            "<allow send_destination='*' eavesdrop='true'/>"
                                            "<allow eavesdrop='true'/><allow own='*'/>"
                                         << rule << "</policy></busconfig>\n";
}

PrivateBus::~PrivateBus() {
    stop();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

bool PrivateBus::start() {
    const std::string configuration = "--config-file=" + folder_ + "/bus.conf";
    daemon_ = fork();
    if (daemon_ == 0) {
        // It writes warnings about limits that it may not raise.
        const int log = open((folder_ + "/log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        dup2(log, STDERR_FILENO);
        execlp(
            "dbus-daemon", "dbus-daemon", "--nofork", "--nopidfile", configuration.c_str(),
            static_cast<char*>(nullptr));
        _exit(127);
    }
    constexpr std::chrono::milliseconds pause(5);
    for (int attempt = 0; attempt < 2000; ++attempt) {
        if (takesConnections()) {
            return true;
        }
        std::this_thread::sleep_for(pause);
    }
    return false;
}

void PrivateBus::stop() {
    if (daemon_ > 0) {
        kill(daemon_, SIGKILL);
        waitpid(daemon_, nullptr, 0);
        daemon_ = 0;
        std::error_code ignored;
        std::filesystem::remove(folder_ + "/bus", ignored);
    }
}

bool PrivateBus::takesConnections() const {
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_un address = socketAddress(folder_ + "/bus");
    return connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

FileDescriptor PrivateBus::listenSilently() const {
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_un address = socketAddress(folder_ + "/bus-silent");
    if (bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0
        || listen(socket.get(), 5) != 0) {
        socket.reset();
    }
    return socket;
}

} // namespace tarnwick
