// A server of files in virtual time.
#pragma once

#include "core/Lifeline.h"
#include "platform/ports/Downloader.h"
#include "tests/simulation/VirtualRunLoop.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick::simulation {

/// Answers a tenth of a second after the question, then a part each tenth of a second. What is not there
/// counts as missing.
class VirtualServer final : public Downloader {
public:
    explicit VirtualServer(VirtualRunLoop& loop) : loop_(loop) {}

    std::map<std::string, std::string> files;
    std::map<std::string, Failure> failures; ///< in place of a file, or after all of it
    bool answers = true;                     ///< else it says nothing from now on
    std::size_t partSize = 1000;

    [[nodiscard]] const std::vector<Request>& requests() const { return requests_; }

    [[nodiscard]] int transfersUnderWay() const { return underWay_; }

    /// At the same time, at any time.
    [[nodiscard]] int mostTransfersUnderWay() const { return mostUnderWay_; }

    [[nodiscard]] RunLoop::Handle fetch(const Request& request, Receiver receiver) override {
        requests_.push_back(request);
        return std::make_unique<Transfer>(*this, request, std::move(receiver));
    }

private:
    class Transfer final : public RunLoop::Registration {
    public:
        Transfer(VirtualServer& server, Request request, Receiver receiver)
            : server_(server), request_(std::move(request)), receiver_(std::move(receiver)) {
            ++server_.underWay_;
            server_.mostUnderWay_ = std::max(server_.mostUnderWay_, server_.underWay_);
            wait();
        }

        Transfer(const Transfer&) = delete;
        Transfer& operator=(const Transfer&) = delete;

        ~Transfer() override { leave(); }

    private:
        void wait() {
            timer_ = server_.loop_.after(0.1, [this] {
                if (server_.answers) {
                    step();
                } else {
                    wait();
                }
            });
        }

        void step() {
            const auto file = server_.files.find(request_.address);
            const bool isThere = file != server_.files.end();
            if (!isThere || sent_ == file->second.size()) {
                const auto failure = server_.failures.find(request_.address);
                if (failure != server_.failures.end()) {
                    end(failure->second);
                } else if (isThere) {
                    end(std::nullopt);
                } else {
                    end(Failure{.problem = Problem::missing, .detail = "404"});
                }
                return;
            }
            const std::string part = file->second.substr(sent_, server_.partSize);
            sent_ += part.size();
            if (sent_ > request_.sizeLimit) {
                end(Failure{.problem = Problem::tooLarge, .detail = ""});
                return;
            }
            const auto watch = lifeline_.watch();
            const auto received = receiver_.received; // a copy: it may end this
            if (received(part) && !watch.hasEnded()) {
                wait();
            }
        }

        void leave() {
            if (!std::exchange(isOver_, true)) {
                --server_.underWay_;
            }
        }

        void end(const std::optional<Failure>& failure) {
            leave();
            const auto ended = receiver_.ended; // a copy: it may end this
            ended(failure);
        }

        VirtualServer& server_;
        Request request_;
        Receiver receiver_;
        std::size_t sent_ = 0;
        bool isOver_ = false;
        RunLoop::Handle timer_;
        Lifeline lifeline_;
    };

    VirtualRunLoop& loop_;
    std::vector<Request> requests_;
    int underWay_ = 0;
    int mostUnderWay_ = 0;
};

} // namespace tarnwick::simulation
