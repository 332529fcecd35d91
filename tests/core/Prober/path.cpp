// Learns the path to an address as the programs do, and prints it: one JSON object a hop.
// usage: tarnwick-path ADDRESS
#include "core/Diagnosis/PathTrace.h"
#include "core/Pinger/Resolve.h"
#include "core/Prober/SystemProbeNetwork.h"
#include "platform/loop/EpollRunLoop.h"

#include <iostream>
#include <string>
#include <variant>

namespace {

using namespace tarnwick;

class Tracer {
public:
    Tracer(EpollRunLoop& loop, ResolvedAddress to) : loop_(loop), network_(loop), to_(std::move(to)) {}

    bool start() {
        auto opened = network_.open(to_.family, [this] { receive(); });
        if (const auto* error = std::get_if<SocketError>(&opened)) {
            std::cerr << error->text << '\n';
            return false;
        }
        socket_ = std::move(std::get<std::unique_ptr<ProbeSocket>>(opened));
        trace_.learn(loop_.now());
        next();
        return true;
    }

    void print() const {
        for (const HopEvidence& hop : trace_.hops(0, loop_.now())) {
            std::cout << R"({"address":")" << hop.address << R"(","isHost":)"
                      << (hop.isHost ? "true" : "false") << R"(,"share":)" << hop.quietShare << R"(,"ms":)"
                      << hop.quietMs.value_or(-1) << "}\n";
        }
        for (const std::string& sender : unreachable_) {
            std::cout << R"({"unreachable":")" << sender << "\"}\n";
        }
        for (const std::string& sender : forbidden_) {
            std::cout << R"({"forbidden":")" << sender << "\"}\n";
        }
    }

private:
    void next() {
        if (const auto probe = trace_.probe(loop_.now())) {
            socket_->send(probe->id, to_, probe->hopLimit);
        }
        const double wait = trace_.isActive() ? trace_.nextProbeAt() - loop_.now() : PathTrace::patience;
        timer_ = loop_.after(wait, [this] { trace_.isActive() ? next() : loop_.stop(); });
    }

    void receive() {
        while (const auto answer = socket_->receive()) {
            if (answer->kind == ProbeAnswer::Kind::unreachable) {
                unreachable_.push_back(answer->sender);
            } else if (answer->kind == ProbeAnswer::Kind::forbidden) {
                forbidden_.push_back(answer->sender);
            } else {
                trace_.answered(
                    answer->id, answer->sender, answer->kind == ProbeAnswer::Kind::reply, answer->at);
            }
        }
    }

    EpollRunLoop& loop_;
    SystemProbeNetwork network_;
    ResolvedAddress to_;
    PathTrace trace_{1};
    std::unique_ptr<ProbeSocket> socket_;
    std::vector<std::string> unreachable_; ///< who says so
    std::vector<std::string> forbidden_;
    RunLoop::Handle timer_;
};

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "usage: tarnwick-path ADDRESS\n";
        return 2;
    }
    const auto resolution = resolve(arguments[1]);
    const auto* addresses = std::get_if<std::vector<ResolvedAddress>>(&resolution);
    if (addresses == nullptr || addresses->empty()) {
        std::cerr << arguments[1] << " is no address\n";
        return 1;
    }
    EpollRunLoop loop;
    Tracer tracer(loop, addresses->front());
    if (!tracer.start()) {
        return 1;
    }
    loop.run();
    tracer.print();
    return 0;
}
