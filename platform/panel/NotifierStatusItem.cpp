#include "platform/panel/NotifierStatusItem.h"

#include "platform/bus/BusCall.h"
#include "platform/bus/BusText.h"

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

constexpr const char* interface = "org.kde.StatusNotifierItem";
constexpr const char* itemPath = "/StatusNotifierItem";

using BusPixmap = sdbus::Struct<std::int32_t, std::int32_t, std::vector<std::uint8_t>>;
using BusPixmaps = std::vector<BusPixmap>;
using BusToolTip = sdbus::Struct<std::string, BusPixmaps, std::string, std::string>;

} // namespace

/// The object on one connection.
class NotifierStatusItem::Exported {
public:
    explicit Exported(NotifierStatusItem& item)
        : item_(item), object_(sdbus::createObject(*item.needs_.bus.connection(), itemPath)) {
        registerFixedProperties();
        registerChangingProperties();
        registerClicks();
        registerSignals();
        object_->finishRegistration();
    }

    void tellDifferences(const ItemPresentation& before, const ItemPresentation& now) {
        (void)attempt([this, &before, &now] {
            if (now.hasOtherIcon(before)) {
                object_->emitSignal("NewIcon").onInterface(interface).withArguments();
            }
            if (now.label != before.label || now.labelGuide != before.labelGuide) {
                object_->emitSignal("XAyatanaNewLabel")
                    .onInterface(interface)
                    .withArguments(validUtf8(now.label), validUtf8(now.labelGuide));
            }
            if (now.toolTipTitle != before.toolTipTitle || now.toolTipText != before.toolTipText) {
                object_->emitSignal("NewToolTip").onInterface(interface).withArguments();
            }
            if (now.spoken != before.spoken) {
                // The one change that the protocol has no signal of its own for.
                object_->emitPropertiesChangedSignal(interface, {"IconAccessibleDesc"});
            }
        });
        item_.needs_.bus.flush();
    }

private:
    /// Every reader counts as a panel that has taken the item.
    template<typename Read>
    void registerProperty(const char* name, Read read) {
        object_->registerProperty(name).onInterface(interface).withGetter([this, read = std::move(read)] {
            item_.itemWasRead_ = true;
            return read();
        });
    }

    void registerText(const char* name, const char* text) {
        registerProperty(name, [text] { return std::string(text); });
    }

    void registerNoPixmaps(const char* name) {
        registerProperty(name, [] { return BusPixmaps(); });
    }

    void registerFixedProperties() {
        registerText("Category", "SystemServices");
        registerText("Id", "tarnwick");
        registerText("Title", ItemPresentation::name);
        registerText("Status", "Active");
        registerProperty("WindowId", [] { return std::int32_t{0}; });
        registerProperty("ItemIsMenu", [] { return false; });
        registerProperty("Menu", [] { return sdbus::ObjectPath(DBusMenu::path); });
        registerText("OverlayIconName", "");
        registerNoPixmaps("OverlayIconPixmap");
        registerText("AttentionIconName", "");
        registerNoPixmaps("AttentionIconPixmap");
        registerText("AttentionMovieName", "");
        registerText("AttentionAccessibleDesc", "");
        registerProperty("XAyatanaOrderingIndex", [] { return std::uint32_t{0}; });
        registerProperty("IconThemePath", [this] { return validUtf8(item_.needs_.iconThemePath); });
    }

    void registerChangingProperties() {
        registerProperty("IconName", [this] { return item_.shown_.iconName; });
        registerProperty("IconPixmap", [this] { return pixmaps(); });
        registerProperty("XAyatanaLabel", [this] { return validUtf8(item_.shown_.label); });
        registerProperty("XAyatanaLabelGuide", [this] { return validUtf8(item_.shown_.labelGuide); });
        // Without an image: the item itself is right beside it.
        registerProperty("ToolTip", [this] {
            return BusToolTip(
                std::string(), BusPixmaps(), validUtf8(item_.shown_.toolTipTitle),
                validUtf8(item_.shown_.toolTipText));
        });
        // Telling of its change reads it, too: that is no panel.
        object_->registerProperty("IconAccessibleDesc")
            .onInterface(interface)
            .withGetter([this] { return validUtf8(item_.shown_.spoken); })
            .withUpdateBehavior(sdbus::Flags::EMITS_CHANGE_SIGNAL);
        object_->setInterfaceFlags(interface).withPropertyUpdateBehavior(sdbus::Flags::EMITS_NO_SIGNAL);
    }

    void registerClicks() {
        // A middle click does what a left one does, which panels with a menu on the left one keep for
        // themselves; a panel that leaves the menu to the item gets what drops down from it.
        for (const char* method : {"Activate", "SecondaryActivate", "ContextMenu"}) {
            object_->registerMethod(method)
                .onInterface(interface)
                .withInputParamNames("x", "y")
                .implementedAs([this](std::int32_t x, std::int32_t y) {
                    item_.activateSoon(item_.desktopPosition(x, y));
                });
        }
        object_->registerMethod("XAyatanaSecondaryActivate")
            .onInterface(interface)
            .withInputParamNames("timestamp")
            .implementedAs([this](std::uint32_t) { item_.activateSoon(std::nullopt); });
        object_->registerMethod("Scroll")
            .onInterface(interface)
            .withInputParamNames("delta", "orientation")
            .implementedAs([](std::int32_t, const std::string&) {});
        object_->registerMethod("ProvideXdgActivationToken")
            .onInterface(interface)
            .withInputParamNames("token")
            .implementedAs([this](const std::string& token) { item_.activationToken_ = token; });
    }

    void registerSignals() {
        for (const char* signal :
             {"NewTitle", "NewIcon", "NewAttentionIcon", "NewOverlayIcon", "NewMenu", "NewToolTip"}) {
            object_->registerSignal(signal).onInterface(interface).withParameters<>();
        }
        object_->registerSignal("NewStatus").onInterface(interface).withParameters<std::string>("status");
        object_->registerSignal("NewIconThemePath")
            .onInterface(interface)
            .withParameters<std::string>("path");
        object_->registerSignal("XAyatanaNewLabel")
            .onInterface(interface)
            .withParameters<std::string, std::string>("label", "guide");
    }

    [[nodiscard]] BusPixmaps pixmaps() const {
        const ItemPresentation& shown = item_.shown_;
        BusPixmaps result;
        for (const Pixmap& image : item_.pixmaps_.images(shown.imageFace, shown.form, shown.ink)) {
            result.emplace_back(image.width, image.height, networkBytes(image));
        }
        return result;
    }

    NotifierStatusItem& item_;
    std::unique_ptr<sdbus::IObject> object_;
};

NotifierStatusItem::NotifierStatusItem(Needs needs)
    : needs_(std::move(needs)),
      pixmaps_(needs_.painter, needs_.screenScales),
      menu_(needs_.loop, needs_.bus, needs_.menu, needs_.iconThemePath),
      hosts_(needs_.bus, needs_.processName),
      registration_(
          {
              .loop = needs_.loop,
              .bus = needs_.bus,
              .wasRead = [this] { return wasRead(); },
              .forgetReaders = [this] { itemWasRead_ = menuWasRead_ = false; },
          },
          needs_.registrationPatience) {
    menu_.onRead = [this] { menuWasRead_ = true; };
    hosts_.onChange = [this] { hostChanged(); };
    colorSubscription_ = needs_.colors.onChange([this] { refresh(); });
    stateSubscription_ = needs_.bus.onStateChange([this](BusConnection::State) { busChanged(); });
    refresh();
    busChanged();
}

NotifierStatusItem::~NotifierStatusItem() = default;

void NotifierStatusItem::setFace(const StatusFace& face) {
    state_.face = face;
    refresh();
}

void NotifierStatusItem::setToolTip(const std::string& text) {
    state_.toolTip = text;
    refresh();
}

void NotifierStatusItem::setAccessibilityValue(const std::string& text) {
    state_.accessibilityValue = text;
    refresh();
}

void NotifierStatusItem::setPanelFace(PanelFace form) {
    state_.form = form;
    refresh();
}

void NotifierStatusItem::setFallbackInk(Ink ink) {
    fallbackInk_ = ink;
    refresh();
}

void NotifierStatusItem::busChanged() {
    exported_.reset();
    registration_.setService("");
    if (needs_.bus.state() != BusConnection::State::connected) {
        return;
    }
    // By the connection's own name, which every watcher knows: some trip over another one that they notice
    // late, and then show an item without its menu, or none.
    (void)attempt([this] {
        exported_ = std::make_unique<Exported>(*this);
        registration_.setService(needs_.bus.connection()->getUniqueName());
    });
}

void NotifierStatusItem::hostChanged() {
    needs_.colors.setFollowsPanel(hosts_.host().hasOwnDarkMode);
    refresh();
    registration_.setWatcher(hosts_.watcher());
    if (hadWatcher_ != hasWatcher()) {
        hadWatcher_ = hasWatcher();
        if (onWatcherChange) {
            onWatcherChange();
        }
    }
}

void NotifierStatusItem::refresh() {
    const Ink ink = inkFor(
        hosts_.host(), {
                           .panelIsDark = needs_.colors.panelIsDark(),
                           .desktopIsDark = needs_.colors.desktopIsDark(),
                           .fallback = fallbackInk_,
                       });
    const ItemPresentation before = std::exchange(
        shown_, present(state_, hosts_.host(), ink, !needs_.iconThemePath.empty(), needs_.painter));
    if (exported_ && hasWatcher() && shown_ != before) {
        exported_->tellDifferences(before, shown_);
    }
}

void NotifierStatusItem::activateSoon(std::optional<ScreenPoint> at) {
    // The panel gets its answer first.
    needs_.loop.post(lifeline_.guarded([this, at] {
        if (onActivate) {
            onActivate(at);
        }
    }));
}

std::optional<ScreenPoint> NotifierStatusItem::desktopPosition(int x, int y) const {
    return hosts_.host().givesGlobalPositions ? std::optional(ScreenPoint{.x = x, .y = y}) : std::nullopt;
}

bool NotifierStatusItem::wasRead() const {
    return menuWasRead_ || (itemWasRead_ && !hosts_.host().readsMenuAtOnce);
}

} // namespace tarnwick
