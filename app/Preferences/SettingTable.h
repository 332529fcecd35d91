// The table of settings. Each setting is described here and nowhere else: its key, default, rule and meaning.
#pragma once

#include "core/PingIntervalSetting.h"
#include "platform/ports/StatusItem.h"
#include "platform/ports/UserDefaults.h"

#include <array>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tarnwick {

/// The keys under which settings are stored.
namespace PreferenceKey {
inline constexpr auto hostname = "Hostname";
inline constexpr auto slowPingLowThreshold = "SlowPingLowThreshold";
inline constexpr auto pingTimeout = "PingTimeout";
inline constexpr auto pingInterval = "PingInterval";
inline constexpr auto showIcon = "ShowIcon";
inline constexpr auto showText = "ShowText";
inline constexpr auto packetLossTextMode = "PacketLossTextMode";
inline constexpr auto showPacketLossText = "ShowPacketLossText";
inline constexpr auto showNotifications = "ShowNotifications";
inline constexpr auto keepHistory = "KeepHistory";
inline constexpr auto panelFace = "PanelFace";
inline constexpr auto panelInk = "PanelInk";
inline constexpr auto checkForUpdates = "CheckForUpdates";
inline constexpr auto installUpdates = "InstallUpdates";
inline constexpr auto lastUpdateCheckDate = "LastUpdateCheckDate";
inline constexpr auto skippedUpdate = "SkippedUpdate";
} // namespace PreferenceKey

/// Which values a setting takes, from the file, from `--set` and in the settings window. Setters enforce
/// none.
enum class SettingRule {
    host,           ///< what `hostIn` finds in a text
    positiveNumber, ///< above 0
    timeout,        ///< a number of seconds in `timeoutRange`
    pingInterval,   ///< a whole number; from the file, `PingIntervalSetting::clamped` brings it into range
    boolean,
    lossMode, ///< the stored text of a `MenuBarTitle::LossMode`
    form,     ///< the stored text of a `StatusItem::Form`
    ink,      ///< the stored text of a `StatusItem::InkChoice`
    date,     ///< seconds since 1970; 0 for none
    anyText,
};

/// How a setting's default reaches its readers.
enum class SettingDefault {
    registered, ///< the store gives it where the key is absent
    own,        ///< `Preferences` fills in the default, so that the store can tell that the key is absent
    olderForm,  ///< none: the key is read only to migrate another setting, and never written
    kept,       ///< as with `own`; restoring the defaults leaves it as it is
};

struct SettingRow {
    const char* key;
    std::variant<bool, double, std::string_view> preset; ///< the default, in the setting's type
    SettingDefault defaultFrom;
    SettingRule rule;
    std::string_view values;  ///< for users, without a time-out's range: see `acceptedValues`
    std::string_view meaning; ///< for users; empty for what is not for them
};

struct NumberRange {
    double lowest;
    double highest;
    std::string_view text; ///< for users
};

/// In seconds. Nothing beyond is a sensible time to wait.
inline constexpr NumberRange timeoutRange{0.01, 3600, "0.01 to 3600"};

/// In the order in which settings are written and described.
inline constexpr std::array<SettingRow, 16> settingTable{{
    {PreferenceKey::hostname, "1.1.1.1", SettingDefault::registered, SettingRule::host,
     "a host name or address", "what to ping"},
    {PreferenceKey::slowPingLowThreshold, 100.0, SettingDefault::registered, SettingRule::positiveNumber,
     "a number of milliseconds above 0", "latency above which a ping is slow"},
    {PreferenceKey::pingTimeout, 4.0, SettingDefault::registered, SettingRule::timeout, "a number of seconds",
     "when an unanswered ping is lost"},
    {PreferenceKey::pingInterval, double{PingIntervalSetting::defaultSeconds}, SettingDefault::registered,
     SettingRule::pingInterval, "a whole number of seconds, 1 to 60", "time between pings"},
    {PreferenceKey::showIcon, true, SettingDefault::registered, SettingRule::boolean, "true or false",
     "show the bars in the panel"},
    {PreferenceKey::showText, true, SettingDefault::registered, SettingRule::boolean, "true or false",
     "show the latency in the panel"},
    {PreferenceKey::packetLossTextMode, "whenLossy", SettingDefault::own, SettingRule::lossMode,
     "off, whenLossy or always", "show the packet loss in the panel"},
    {PreferenceKey::showPacketLossText, false, SettingDefault::olderForm, SettingRule::boolean,
     "true or false", ""},
    {PreferenceKey::showNotifications, false, SettingDefault::registered, SettingRule::boolean,
     "true or false", "notify when the connection goes down and comes back"},
    {PreferenceKey::keepHistory, true, SettingDefault::registered, SettingRule::boolean, "true or false",
     "keep a history of latency, loss and outages on this computer"},
    {PreferenceKey::panelFace, "auto", SettingDefault::own, SettingRule::form, "auto, label, wide or square",
     "form of the panel item"},
    {PreferenceKey::panelInk, "auto", SettingDefault::own, SettingRule::ink, "auto, light or dark",
     "color of the panel item"},
    {PreferenceKey::checkForUpdates, true, SettingDefault::kept, SettingRule::boolean, "true or false",
     "in the bundle, ask once a day for a newer version"},
    {PreferenceKey::installUpdates, false, SettingDefault::kept, SettingRule::boolean, "true or false",
     "in the bundle, install newer versions without asking"},
    {PreferenceKey::lastUpdateCheckDate, 0.0, SettingDefault::kept, SettingRule::date,
     "a number of seconds since 1970", ""},
    {PreferenceKey::skippedUpdate, "", SettingDefault::kept, SettingRule::anyText, "a version", ""},
}};

/// The place of a key in the table. A key that is not there does not compile.
consteval std::size_t settingIndex(std::string_view key) {
    for (std::size_t index = 0; index < settingTable.size(); ++index) {
        if (settingTable.at(index).key == key) {
            return index;
        }
    }
    throw std::invalid_argument("no such setting");
}

[[nodiscard]] UserDefaults::Value defaultOf(const SettingRow& row);

/// The value as the setting's rule keeps it; nothing when the rule refuses it. `value` has the setting's
/// type.
[[nodiscard]] std::optional<UserDefaults::Value> admitted(
    const SettingRow& row, const UserDefaults::Value& value);

/// For a refused value, what to say after "KEY must be ..., not VALUE": ": it has a blank in it". Empty where
/// that says it all.
[[nodiscard]] std::string whyRefused(const SettingRow& row, const UserDefaults::Value& value);

/// The value that a text gives for this setting: "true", "2.5", "example.org". Nothing for any other text,
/// and for a number that would have to be brought into range.
[[nodiscard]] std::optional<UserDefaults::Value> parsedSetting(
    const SettingRow& row, const std::string& text);

/// The default as `parsedSetting` reads it.
[[nodiscard]] std::string defaultText(const SettingRow& row);

/// Whether users are told of it.
[[nodiscard]] constexpr bool isForUsers(const SettingRow& row) {
    return !row.meaning.empty();
}

/// The texts that a setting takes, where they are few enough to be listed; else none.
[[nodiscard]] std::vector<std::string_view> choicesOf(const SettingRow& row);

/// Completes "KEY must be ...".
[[nodiscard]] std::string acceptedValues(const SettingRow& row);

/// Whether "Restore Default Settings" puts it back.
[[nodiscard]] constexpr bool isRestored(const SettingRow& row) {
    return row.defaultFrom == SettingDefault::registered || row.defaultFrom == SettingDefault::own;
}

/// What the setting means and takes, in one line for users.
[[nodiscard]] std::string description(const SettingRow& row);

/// The finite number that is all of a text; nothing for any other text.
[[nodiscard]] std::optional<double> numberIn(std::string_view text);

inline constexpr std::array allForms{
    StatusItem::Form::automatic, StatusItem::Form::label, StatusItem::Form::wide, StatusItem::Form::square};

/// The stored text of a form and back; nothing for any other text, case included.
[[nodiscard]] std::string_view rawValue(StatusItem::Form form);
[[nodiscard]] std::optional<StatusItem::Form> formOf(std::string_view text);

/// The same for an ink.
[[nodiscard]] std::string_view rawValue(StatusItem::InkChoice ink);
[[nodiscard]] std::optional<StatusItem::InkChoice> inkOf(std::string_view text);

} // namespace tarnwick
