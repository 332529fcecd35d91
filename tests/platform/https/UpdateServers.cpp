#include "tests/platform/https/UpdateServers.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tarnwick::test {

namespace {

/// In the child: the servers, which read orders from the descriptor and write answers there.
[[noreturn]] void becomeServers(int conversation, const std::string& folder) {
    dup2(conversation, STDIN_FILENO);
    dup2(conversation, STDOUT_FILENO);
    execl(
        "/usr/bin/python3", "python3", "-B", TARNWICK_UPDATE_SERVERS, folder.c_str(),
        static_cast<char*>(nullptr));
    _exit(127);
}

} // namespace

UpdateServers::UpdateServers() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        throw std::runtime_error("no socket pair");
    }
    conversation_ = FileDescriptor(ends[0]);
    FileDescriptor theirs(ends[1]);
    process_ = ::fork();
    if (process_ == 0) {
        becomeServers(theirs.get(), folder_.path());
    }
    theirs.reset(); // so that their end is noticed
    about_ = nextAnswer();
}

UpdateServers::~UpdateServers() {
    conversation_.reset();
    ::waitpid(process_, nullptr, 0);
}

void UpdateServers::put(const std::string& name, std::string_view content) const {
    std::ofstream(folder_.path() / "files" / name, std::ios::binary) << content;
}

void UpdateServers::behave(
    const std::string& path, const nlohmann::json& behavior, const std::string& server) const {
    (void)ask({{"do", "behave"}, {"server", server}, {"path", path}, {"behavior", behavior}});
}

std::string UpdateServers::address(const std::string& path, const std::string& server) const {
    return about_["servers"][server].get<std::string>() + path;
}

std::vector<UpdateServers::Headers> UpdateServers::requests(
    const std::string& path, const std::string& server) const {
    std::vector<Headers> found;
    for (const auto& request : ask({{"do", "requests"}, {"server", server}})) {
        if (request["path"] == path) {
            found.push_back(request["headers"].get<Headers>());
        }
    }
    return found;
}

bool UpdateServers::isLeft(const std::string& path) const {
    const auto left = ask({{"do", "left"}}).get<std::vector<std::string>>();
    return std::ranges::find(left, path) != left.end();
}

int UpdateServers::chunkCount() const {
    return ask({{"do", "chunks"}});
}

bool UpdateServers::isProxied() const {
    const std::string target = address("").substr(std::string_view("https://").size());
    const auto targets = ask({{"do", "proxied"}}).get<std::vector<std::string>>();
    return std::ranges::find(targets, target) != targets.end();
}

nlohmann::json UpdateServers::ask(const nlohmann::json& order) const {
    const std::string line = order.dump() + "\n";
    if (::send(conversation_.get(), line.data(), line.size(), MSG_NOSIGNAL) != std::ssize(line)) {
        throw std::runtime_error("the servers have ended");
    }
    return nextAnswer();
}

nlohmann::json UpdateServers::nextAnswer() const {
    std::string line;
    for (char letter = 0; letter != '\n'; line += letter) {
        if (::read(conversation_.get(), &letter, 1) != 1) {
            throw std::runtime_error("the servers have ended");
        }
    }
    return nlohmann::json::parse(line);
}

} // namespace tarnwick::test
