// What all tests of downloads share.
#pragma once

#include "core/FileDescriptor.h"
#include "platform/https/HttpsDownloader.h"
#include "platform/loop/EpollRunLoop.h"
#include "platform/qt/QtLoopHost.h"
#include "tests/core/Required.h"
#include "tests/platform/https/UpdateServers.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <arpa/inet.h>
#include <cstdint>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <vector>

namespace tarnwick {

class HttpsDownloaderTest : public testing::Test {
protected:
    using Problem = Downloader::Problem;

    static constexpr std::uint64_t enough = std::uint64_t{16} * 1024 * 1024;
    /// Seconds of silence that a test waits for.
    static constexpr double shortTime = 0.3;

    void SetUp() override {
        if (!test::isAmongUpdateServers()) {
            TARNWICK_CANNOT_RUN("tests/lab/run does not run this, or gives no mounts.");
        }
    }

    /// What becomes of a fetch.
    struct Outcome {
        std::string content;
        int parts = 0;
        int ends = 0;
        std::optional<Downloader::Failure> failure;

        [[nodiscard]] std::optional<Problem> problem() const {
            return failure ? std::optional(failure->problem) : std::nullopt;
        }
    };

    [[nodiscard]] static Downloader::Receiver into(Outcome& outcome) {
        return {
            .received =
                [&outcome](std::string_view part) {
                    outcome.content += part;
                    ++outcome.parts;
                    return true;
                },
            .ended =
                [&outcome](const std::optional<Downloader::Failure>& failure) {
                    outcome.failure = failure;
                    ++outcome.ends;
                },
        };
    }

    [[nodiscard]] static Downloader::Request requestFor(
        const std::string& address, std::uint64_t sizeLimit = enough) {
        return {.address = address, .userAgent = "Tarnwick/0.1", .sizeLimit = sizeLimit};
    }

    /// Lets the program work until the condition holds; false when it does not hold in 20 seconds.
    static bool runUntil(const std::function<bool()>& condition) {
        QElapsedTimer timer;
        timer.start();
        while (!condition() && !timer.hasExpired(20'000)) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
        }
        return condition();
    }

    /// For what must not happen.
    static void runFor(int milliseconds) {
        QElapsedTimer timer;
        timer.start();
        while (!timer.hasExpired(milliseconds)) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, milliseconds);
        }
    }

    /// Of the file at the address, with a downloader of that patience.
    [[nodiscard]] Outcome fetched(const Downloader::Request& request, HttpsPatience patience = {}) {
        HttpsDownloader downloader(loop_, patience);
        Outcome outcome;
        const RunLoop::Handle handle = downloader.fetch(request, into(outcome));
        EXPECT_TRUE(runUntil([&outcome] { return outcome.ends > 0; }));
        EXPECT_EQ(outcome.ends, 1);
        return outcome;
    }

    [[nodiscard]] Outcome fetchedFrom(const std::string& path, const std::string& server = "good") {
        return fetched(requestFor(servers_.address(path, server)));
    }

    /// Every byte has another one beside it than at most other places.
    [[nodiscard]] static std::string longContent(std::size_t size) {
        std::string content(size, '\0');
        for (std::size_t at = 0; at < size; ++at) {
            content[at] = static_cast<char>((at * 7 + at / 251) & 0xff);
        }
        return content;
    }

    /// A port of loopback that is taken; nobody answers there, or nobody takes the connection either.
    struct Port {
        FileDescriptor socket;
        std::string address;
    };

    [[nodiscard]] static Port silentPort(bool takesConnections) {
        FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in own{};
        own.sin_family = AF_INET;
        own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof own;
        EXPECT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&own), size), 0);
        EXPECT_EQ(::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&own), &size), 0);
        if (takesConnections) {
            EXPECT_EQ(::listen(socket.get(), 5), 0);
        }
        return {
            .socket = std::move(socket),
            .address = "https://127.0.0.1:" + std::to_string(ntohs(own.sin_port)) + "/"};
    }

    test::UpdateServers& servers_ = test::updateServers();
    EpollRunLoop loop_;
    QtLoopHost host_{loop_};
};

} // namespace tarnwick
