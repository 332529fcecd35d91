// Which adapter stands behind each port that the monitor of either program needs.
#pragma once

#include "app/Monitor/Monitor.h"
#include "core/Pinger/SystemPingNetwork.h"
#include "core/Prober/SystemProbeNetwork.h"
#include "core/RunLoop.h"
#include "platform/bus/BusConnection.h"
#include "platform/bus/LogindSleepMonitor.h"
#include "platform/bus/NetworkManagerConnectivity.h"
#include "platform/dns/DirectNameServerCheck.h"
#include "platform/journal/SqliteJournal.h"
#include "platform/linux/KernelLinkInspector.h"
#include "platform/linux/RoutePathMonitor.h"
#include "platform/linux/SystemAddressNames.h"

namespace tarnwick {

/// Main thread.
class SystemSurroundings {
public:
    /// The loop outlives this object.
    explicit SystemSurroundings(RunLoop& loop);

    SystemSurroundings(const SystemSurroundings&) = delete;
    SystemSurroundings& operator=(const SystemSurroundings&) = delete;

    /// For a monitor that ends before this object and `notifications`, which differ between the programs.
    [[nodiscard]] MonitorEnvironment environment(NotificationCenter& notifications);

    [[nodiscard]] BusConnection& systemBus() { return systemBus_; }

    [[nodiscard]] Journal& journal() { return journal_; }

private:
    RunLoop& loop_;
    SystemPingNetwork network_;
    SystemProbeNetwork probes_;
    KernelLinkInspector link_;
    DirectNameServerCheck nameServers_;
    SystemAddressNames addressNames_;
    SqliteJournal journal_;
    RoutePathMonitor path_;
    BusConnection systemBus_;
    NetworkManagerConnectivity connectivity_;
    LogindSleepMonitor sleep_;
};

} // namespace tarnwick
