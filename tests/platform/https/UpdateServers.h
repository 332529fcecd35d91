// The scripted servers of tests/update, started beside the test program.
#pragma once

#include "core/FileDescriptor.h"
#include "tests/support/TemporaryFolder.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace tarnwick::test {

/// They end with this object. Their names: "good", "expired", "other host", "self-signed",
/// "unknown authority", "plain" (HTTP).
class UpdateServers {
public:
    /// Returns when they take connections. Throws where they can't be started.
    UpdateServers();
    UpdateServers(const UpdateServers&) = delete;
    UpdateServers& operator=(const UpdateServers&) = delete;
    ~UpdateServers();

    /// All of them serve it.
    void put(const std::string& name, std::string_view content) const;

    /// The fields of `Behavior` in tests/update/server.py, from the next request on.
    void behave(
        const std::string& path, const nlohmann::json& behavior, const std::string& server = "good") const;

    [[nodiscard]] std::string address(const std::string& path, const std::string& server = "good") const;

    [[nodiscard]] std::string proxyAddress() const { return about_["proxy"]; }

    /// The authority that signs the good ones.
    [[nodiscard]] std::filesystem::path store() const { return about_["store"].get<std::string>(); }

    /// Of the requests for the path, each as pairs of name and value.
    using Headers = std::vector<std::pair<std::string, std::string>>;
    [[nodiscard]] std::vector<Headers> requests(
        const std::string& path, const std::string& server = "good") const;

    /// Whether the client of such a request has gone before the end of the answer.
    [[nodiscard]] bool isLeft(const std::string& path) const;

    /// How many chunks the connections have taken from the good server.
    [[nodiscard]] int chunkCount() const;

    /// Whether the proxy has passed on a connection to the good server.
    [[nodiscard]] bool isProxied() const;

private:
    [[nodiscard]] nlohmann::json ask(const nlohmann::json& order) const;
    [[nodiscard]] nlohmann::json nextAnswer() const;

    TemporaryFolder folder_;
    FileDescriptor conversation_;
    pid_t process_ = -1;
    nlohmann::json about_;
};

/// Those of the test program.
[[nodiscard]] UpdateServers& updateServers();

/// Whether this program trusts their authority, and sends nothing but to loopback.
[[nodiscard]] bool isAmongUpdateServers();

} // namespace tarnwick::test
