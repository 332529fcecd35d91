// The user's settings as observable properties, written through to the stored defaults at every assignment.
#pragma once

#include "app/Observation/Observation.h"
#include "core/MenuBarTitle.h"
#include "core/QualityScorer.h"
#include "platform/ports/StatusItem.h"
#include "platform/ports/UserDefaults.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace tarnwick {

/// The keys under which settings are stored.
namespace PreferenceKey {
inline constexpr auto hostname = "Hostname";
inline constexpr auto pingTimeout = "PingTimeout";
inline constexpr auto pingInterval = "PingInterval";
inline constexpr auto slowPingLowThreshold = "SlowPingLowThreshold";
inline constexpr auto showIcon = "ShowIcon";
inline constexpr auto showText = "ShowText";
inline constexpr auto showNotifications = "ShowNotifications";
inline constexpr auto packetLossTextMode = "PacketLossTextMode";
inline constexpr auto showPacketLossText = "ShowPacketLossText"; ///< older form of the loss mode; only read
inline constexpr auto panelFace = "PanelFace"; ///< for panels that are taken for something else; only read
} // namespace PreferenceKey

/// The stored text of a panel face and back; nothing for any other text, case included.
[[nodiscard]] std::string_view rawValue(StatusItem::PanelFace face);
[[nodiscard]] std::optional<StatusItem::PanelFace> panelFace(std::string_view text);

/// Read at creation, and again when told to. Setters validate nothing: who calls them hands in valid values.
/// An equal value tells no observer but is written all the same. Main thread.
class Preferences {
public:
    /// What the status item shows. Showing neither is impossible by design.
    enum class Display { iconAndText = 0, iconOnly = 1, textOnly = 2 };

    static constexpr std::array allDisplays{Display::iconAndText, Display::iconOnly, Display::textOnly};

    /// `defaults` outlives this object.
    explicit Preferences(UserDefaults& defaults);

    /// The values that hold where nothing is stored.
    [[nodiscard]] static const UserDefaults::Table& registeredDefaults();

    /// Reads everything afresh, as at creation; writes nothing. Who uses a monitor reloads through that.
    void reload();

    [[nodiscard]] const std::string& hostname() const { return hostname_.get(); }

    [[nodiscard]] double slowPingThresholdMs() const { return slowPingThresholdMs_.get(); }

    [[nodiscard]] double pingTimeout() const { return pingTimeout_.get(); }

    [[nodiscard]] double pingInterval() const { return pingInterval_.get(); }

    [[nodiscard]] Display display() const { return display_.get(); }

    [[nodiscard]] MenuBarTitle::LossMode lossTextMode() const { return lossTextMode_.get(); }

    [[nodiscard]] bool showNotifications() const { return showNotifications_.get(); }

    [[nodiscard]] StatusItem::PanelFace panelFace() const { return panelFace_.get(); }

    void setHostname(const std::string& hostname);
    void setSlowPingThresholdMs(double milliseconds);
    void setPingTimeout(double seconds);
    void setPingInterval(double seconds);
    void setDisplay(Display display);
    void setLossTextMode(MenuBarTitle::LossMode mode);
    void setShowNotifications(bool show);

    [[nodiscard]] ScoringConfig scoringConfig() const;

    /// Puts every setting back to its registered default, and stores them all.
    void restoreDefaults();

private:
    UserDefaults& defaults_;
    Observed<std::string> hostname_;
    Observed<double> slowPingThresholdMs_;
    Observed<double> pingTimeout_;
    Observed<double> pingInterval_;
    Observed<Display> display_;
    Observed<MenuBarTitle::LossMode> lossTextMode_;
    Observed<bool> showNotifications_;
    Observed<StatusItem::PanelFace> panelFace_;
};

} // namespace tarnwick
