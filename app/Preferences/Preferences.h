// The user's settings as observable properties.
#pragma once

#include "app/Observation/Observation.h"
#include "app/Preferences/SettingTable.h"
#include "core/MenuBarTitle.h"
#include "core/QualityScorer.h"
#include "core/RunLoop.h"

#include <array>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick {

/// Reads the store at creation and in `reload`. Setters take any value and always store it. Observers and
/// `onChange` are told only of real changes, before the value is stored. Main thread.
class Preferences {
public:
    /// What the status item shows: always an icon or a text.
    enum class Display { iconAndText = 0, iconOnly = 1, textOnly = 2 };

    static constexpr std::array allDisplays{Display::iconAndText, Display::iconOnly, Display::textOnly};
    static constexpr std::array allPanelInks{
        StatusItem::InkChoice::automatic, StatusItem::InkChoice::light, StatusItem::InkChoice::dark};

    /// A stored value that can't be meant counts as absent. `defaults` outlives this object.
    explicit Preferences(UserDefaults& defaults);

    /// Takes over what has changed in the store since it was last read; writes nothing. A host or
    /// number that can't be meant changes nothing.
    void reload();

    [[nodiscard]] const std::string& hostname() const {
        return get<std::string>(settingIndex(PreferenceKey::hostname));
    }

    [[nodiscard]] double slowPingThresholdMs() const {
        return get<double>(settingIndex(PreferenceKey::slowPingLowThreshold));
    }

    [[nodiscard]] double pingTimeout() const { return get<double>(settingIndex(PreferenceKey::pingTimeout)); }

    [[nodiscard]] double pingInterval() const {
        return get<double>(settingIndex(PreferenceKey::pingInterval));
    }

    [[nodiscard]] Display display() const;
    [[nodiscard]] MenuBarTitle::LossMode lossTextMode() const;

    [[nodiscard]] bool showNotifications() const {
        return get<bool>(settingIndex(PreferenceKey::showNotifications));
    }

    [[nodiscard]] bool keepsHistory() const { return get<bool>(settingIndex(PreferenceKey::keepHistory)); }

    [[nodiscard]] StatusItem::Form panelForm() const;
    [[nodiscard]] StatusItem::InkChoice panelInk() const;

    [[nodiscard]] bool automaticallyChecksForUpdates() const {
        return get<bool>(settingIndex(PreferenceKey::checkForUpdates));
    }

    [[nodiscard]] bool automaticallyDownloadsUpdates() const {
        return get<bool>(settingIndex(PreferenceKey::installUpdates));
    }

    /// Empty before the first check.
    [[nodiscard]] std::optional<RunLoop::WallTime> lastUpdateCheckDate() const;

    /// The version that the user does not want to be asked about again; empty where there is none.
    [[nodiscard]] const std::string& skippedUpdate() const {
        return get<std::string>(settingIndex(PreferenceKey::skippedUpdate));
    }

    void setHostname(const std::string& hostname);
    void setSlowPingThresholdMs(double milliseconds);
    void setPingTimeout(double seconds);
    void setPingInterval(double seconds);
    void setDisplay(Display display);
    void setLossTextMode(MenuBarTitle::LossMode mode);
    void setShowNotifications(bool show);
    void setKeepsHistory(bool keeps);
    void setPanelForm(StatusItem::Form form);
    void setPanelInk(StatusItem::InkChoice ink);
    void setAutomaticallyChecksForUpdates(bool checks);
    void setAutomaticallyDownloadsUpdates(bool downloads);
    void setLastUpdateCheckDate(RunLoop::WallTime date);
    void setSkippedUpdate(const std::string& version);

    [[nodiscard]] ScoringConfig scoringConfig() const;

    /// Puts every setting but those of updates back to its default, and stores them all.
    void restoreDefaults();

    /// All settings at one moment.
    class Snapshot {
        friend class Preferences;
        std::vector<UserDefaults::Value> values; ///< in the order of the table
    };

    [[nodiscard]] Snapshot snapshot() const;
    /// Puts every setting back to what it was then, and stores them all.
    void putBack(const Snapshot& snapshot);

    /// Writes to the disk now what is waiting to be written.
    void flush() { defaults_.flush(); }

    /// Called after a real change, once for all settings that change together, and before they are stored.
    std::function<void()> onChange;

private:
    using Value = UserDefaults::Value;
    using Assignment = std::pair<std::size_t, Value>; ///< a place in the table, and the new value

    template<class T>
    [[nodiscard]] const T& get(std::size_t index) const {
        return std::get<T>(values_.at(index).get());
    }

    /// The stored value as its rule keeps it; nothing when the rule refuses it.
    [[nodiscard]] std::optional<Value> admittedValue(const SettingRow& row) const;
    /// That value, or else the default.
    [[nodiscard]] Value load(const SettingRow& row) const;
    /// Changes what is observed, without storing it.
    void assign(const std::vector<Assignment>& assignments);
    void set(const std::vector<Assignment>& assignments);

    UserDefaults& defaults_;
    std::array<Observed<Value>, settingTable.size()> values_; ///< in the order of the table
};

} // namespace tarnwick
