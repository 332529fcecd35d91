// Any settings file: reading it is safe, and changing one setting keeps the others.
#include "platform/xdg/SettingsFile.h"

#include "platform/loop/EpollRunLoop.h"
#include "tests/fuzz/Fuzzing.h"

#include <array>

namespace tarnwick {
namespace {

constexpr std::array keys{"Hostname", "PingTimeout", "PingInterval", "ShowIcon", "PacketLossTextMode", ""};

/// All that can be read of the known settings.
struct Reading {
    explicit Reading(const SettingsFile& settings) {
        for (std::size_t at = 0; at < keys.size(); ++at) {
            booleans[at] = settings.boolean(keys[at]);
            numbers[at] = settings.number(keys[at]);
            texts[at] = settings.text(keys[at]);
        }
    }

    std::array<std::optional<bool>, keys.size()> booleans;
    std::array<std::optional<double>, keys.size()> numbers;
    std::array<std::optional<std::string>, keys.size()> texts;

    friend bool operator==(const Reading&, const Reading&) = default;
};

} // namespace
} // namespace tarnwick

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarnwick;
    static const fuzz::ScratchFolder folder;
    const std::filesystem::path file = folder.fileOf({data, size});
    static EpollRunLoop loop;
    SettingsFile settings(loop, file);
    const Reading before(settings);

    settings.set("SlowPingLowThreshold", 123.0);
    fuzz::require(settings.number("SlowPingLowThreshold") == 123.0);

    settings.flush();
    const SettingsFile again(loop, file);
    fuzz::require(again.number("SlowPingLowThreshold") == 123.0);
    fuzz::require(Reading(again) == before);
    return 0;
}
