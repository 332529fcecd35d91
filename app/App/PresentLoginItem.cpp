#include "app/App/PresentLoginItem.h"

#include "core/Storage/FileStore.h"
#include "core/Storage/UserFolders.h"
#include "platform/bus/BackgroundPortal.h"
#include "platform/linux/RunningProgram.h"
#include "platform/xdg/AutostartEntry.h"

#include <filesystem>
#include <system_error>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

/// There while the portal has granted the start with the session.
fs::path grantFile() {
    return UserFolders::data() / "Tarnwick" / "starts-with-session";
}

bool isGranted() {
    std::error_code error;
    return fs::exists(grantFile(), error);
}

/// Where the file can't be written, the switch shows a wrong state in the next run; the portal still knows.
void remember(bool granted) {
    std::error_code error;
    if (granted) {
        error = FileStore::replace(grantFile(), "");
    } else {
        fs::remove(grantFile(), error);
    }
}

} // namespace

std::unique_ptr<LoginItem> presentLoginItem(BusConnection& bus, bool isSandboxed) {
    if (isSandboxed) {
        return std::make_unique<BackgroundPortal>(BackgroundPortal::Needs{
            .bus = bus,
            .command = {"tarnwick", AutostartEntry::fromSession},
            .isGranted = isGranted,
            .remember = remember});
    }
    return std::make_unique<AutostartEntry>(runningProgram(), AutostartEntry::presentSession());
}

} // namespace tarnwick
