#include "app/App/ExtensionOffer.h"

#include "core/Storage/FileStore.h"

#include <system_error>
#include <utility>

namespace tarnwick {

ExtensionOffer::ExtensionOffer(BusConnection& bus, Monitor& monitor, std::filesystem::path answered)
    : bus_(bus), monitor_(monitor), answered_(std::move(answered)), extension_(bus) {
}

void ExtensionOffer::start() {
    std::error_code error;
    if (std::filesystem::exists(answered_, error)) {
        return;
    }
    stateSubscription_ = bus_.onStateChange([this] { ask(); });
    ask();
}

void ExtensionOffer::ask() {
    if (bus_.state() != BusConnection::State::connected) {
        return;
    }
    extension_.askWhetherOff([this](bool isOff) {
        if (isOff) {
            monitor_.setNotice(extensionNotice());
        } else {
            monitor_.clearNotice(Notice::Kind::offersExtension);
        }
    });
}

void ExtensionOffer::answer(bool switchOn) {
    stateSubscription_.reset();
    monitor_.clearNotice(Notice::Kind::offersExtension);
    if (switchOn) {
        extension_.switchOn([this](bool isOn) {
            if (isOn) {
                remember();
            }
        });
    } else {
        remember();
    }
}

void ExtensionOffer::remember() {
    // Where it can't be written the next start offers again.
    static_cast<void>(FileStore::replace(answered_, "", FileStore::Durability::crash));
}

} // namespace tarnwick
