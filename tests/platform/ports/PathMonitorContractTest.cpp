// The kernel's path monitor and the one that stands in for it, held to the one contract.
#include "tests/platform/ports/PathMonitorContract.h"

#include "platform/linux/RoutePathMonitor.h"
#include "platform/loop/EpollRunLoop.h"
#include "tests/platform/linux/NetworkNamespace.h"
#include "tests/simulation/FakePathMonitor.h"
#include "tests/simulation/VirtualRunLoop.h"
#include "tests/support/LoopTurn.h"

#include <memory>

namespace tarnwick {

namespace {

class FakeDriver {
public:
    static std::string obstacle() { return {}; }

    PathMonitor& monitor() { return *monitor_; }

    void connect(const std::string& interface) { monitor_->report(true, {interface}); }

    void disconnect() { monitor_->report(false); }

    bool runUntil(const std::function<bool()>& condition) {
        settle();
        return condition();
    }

    void settle() { loop_.runPending(); }

    void close() { monitor_.reset(); }

private:
    simulation::VirtualRunLoop loop_;
    /// Alone on the heap, so that a sanitizer reports uses after its end.
    std::unique_ptr<simulation::FakePathMonitor> monitor_ =
        std::make_unique<simulation::FakePathMonitor>(loop_);
};

class KernelDriver {
public:
    KernelDriver()
        : isReady_(
              namespace_.isEntered() && test::NetworkNamespace::addLink("wan0")
              && test::NetworkNamespace::addLink("wan1")) {}

    [[nodiscard]] std::string obstacle() const {
        return isReady_ ? "" : "this machine gives no network namespace, or has no ip command";
    }

    PathMonitor& monitor() { return *monitor_; }

    /// Also where the route is as it should be, the kernel tells of changes.
    static void connect(const std::string& interface) {
        EXPECT_TRUE(test::NetworkNamespace::ip(
            "route replace unreachable default\nroute replace default dev " + interface));
    }

    static void disconnect() { EXPECT_TRUE(test::NetworkNamespace::ip("route del default")); }

    bool runUntil(const std::function<bool()>& condition) {
        const double patience = loop_.now() + 20;
        while (!condition() && loop_.now() < patience) {
            test::runOneTurn(loop_, 0.1);
        }
        return condition();
    }

    void settle() {
        const double end = loop_.now() + 3 * RoutePathMonitor::settleTime;
        while (loop_.now() < end) {
            test::runOneTurn(loop_, end - loop_.now());
        }
    }

    void close() { monitor_.reset(); }

private:
    test::NetworkNamespace namespace_;
    bool isReady_;
    EpollRunLoop loop_;
    std::unique_ptr<RoutePathMonitor> monitor_ = std::make_unique<RoutePathMonitor>(loop_);
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, PathMonitorContract, FakeDriver);
INSTANTIATE_TYPED_TEST_SUITE_P(Kernel, PathMonitorContract, KernelDriver);

} // namespace tarnwick
