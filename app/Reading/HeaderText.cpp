#include "app/Reading/HeaderText.h"

#include "app/Reading/Format.h"
#include "core/Text.h"

namespace tarnwick::HeaderText {

std::string hostLine(const Monitor& monitor) {
    if (monitor.status() == Monitor::Status::down) {
        return monitor.downReasonText();
    }
    const std::string& host = monitor.prefs().hostname();
    const auto& address = monitor.resolvedAddress();
    return address && *address != host ? host + " · " + *address : host;
}

std::string latency(const Monitor& monitor) {
    if (monitor.status() == Monitor::Status::down) {
        return "Down";
    }
    const std::optional<double> latest = monitor.latestPingMs();
    return latest ? Format::wholeMs(*latest) : "–";
}

std::optional<std::string> loss(const Monitor& monitor) {
    if (!monitor.showsLoss() || monitor.status() == Monitor::Status::down) {
        return std::nullopt;
    }
    return Text::whole(monitor.lossPercent()) + "% loss";
}

} // namespace tarnwick::HeaderText
