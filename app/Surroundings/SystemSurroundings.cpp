#include "app/Surroundings/SystemSurroundings.h"

#include "platform/linux/NameServers.h"
#include "platform/linux/PingPermission.h"
#include "platform/linux/SuspendedTime.h"

namespace tarnwick {

SystemSurroundings::SystemSurroundings(RunLoop& loop)
    : loop_(loop),
      network_(loop),
      probes_(loop),
      link_(loop),
      nameServers_(loop, [] { return NameServers::asked(); }),
      addressNames_(loop),
      journal_(SqliteJournal::defaultPath()),
      path_(loop),
      systemBus_(loop, BusConnection::systemAddress()),
      connectivity_(systemBus_),
      sleep_(loop, systemBus_, SuspendedTime::sinceBoot) {
}

MonitorEnvironment SystemSurroundings::environment(NotificationCenter& notifications) {
    return {
        .loop = loop_,
        .network = network_,
        .path = path_,
        .sleep = sleep_,
        .notifications = notifications,
        .store = StatsStore::defaultStore(),
        .missingPingPermission = [] { return PingPermission::grantingCommand(); },
        .diagnosis =
            DiagnosisSources{
                .probes = probes_,
                .link = link_,
                .nameServers = nameServers_,
                .connectivity = connectivity_,
                .addressNames = addressNames_},
        .journal = &journal_};
}

} // namespace tarnwick
