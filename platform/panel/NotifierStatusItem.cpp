#include "platform/panel/NotifierStatusItem.h"

#include "platform/bus/BusObject.h"

#include <cstdint>
#include <tuple>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

constexpr const char* itemInterface = "org.kde.StatusNotifierItem";
constexpr const char* itemPath = "/StatusNotifierItem";

using BusPixmap = std::tuple<std::int32_t, std::int32_t, std::vector<std::uint8_t>>;
using BusPixmaps = std::vector<BusPixmap>;
using BusToolTip = std::tuple<std::string, BusPixmaps, std::string, std::string>;

} // namespace

/// The object on one connection.
class NotifierStatusItem::Exported {
public:
    explicit Exported(NotifierStatusItem& item)
        : item_(item), object_(*item.needs_.bus.link(), itemPath, itemInterface) {
        declareFixedProperties();
        declareChangingProperties();
        declareClicks();
        declareSignals();
    }

    [[nodiscard]] bool publish() { return object_.publish(); }

    void tellDifferences(const ItemPresentation& before, const ItemPresentation& now) {
        if (now.hasOtherIcon(before)) {
            object_.emit("NewIcon");
        }
        if (now.label != before.label || now.labelGuide != before.labelGuide) {
            object_.emit("XAyatanaNewLabel", now.label, now.labelGuide);
        }
        if (now.toolTipTitle != before.toolTipTitle || now.toolTipText != before.toolTipText) {
            object_.emit("NewToolTip");
        }
        if (now.spoken != before.spoken) {
            // The item's interface has no signal for this property.
            object_.emitChange(spokenName);
        }
    }

    void tellAnotherLabel(const ItemPresentation& now) {
        object_.emit("XAyatanaNewLabel", std::string(), std::string());
        object_.emit("XAyatanaNewLabel", now.label, now.labelGuide);
    }

private:
    static constexpr const char* spokenName = "IconAccessibleDesc";

    /// A panel that reads a property has taken the item.
    template<typename Read>
    void declareProperty(const char* name, Read read) {
        object_.property(name, [this, read = std::move(read)] {
            item_.itemWasRead_ = true;
            return read();
        });
    }

    void declareText(const char* name, const char* text) {
        declareProperty(name, [text] { return std::string(text); });
    }

    void declareNoPixmaps(const char* name) {
        declareProperty(name, [] { return BusPixmaps(); });
    }

    void declareFixedProperties() {
        declareText("Category", "SystemServices");
        declareText("Id", "tarnwick");
        declareText("Title", ItemPresentation::name);
        declareText("Status", "Active");
        declareProperty("WindowId", [] { return std::int32_t{0}; });
        declareProperty("ItemIsMenu", [] { return false; });
        declareProperty("Menu", [] { return BusPath{DBusMenu::path}; });
        declareText("OverlayIconName", "");
        declareNoPixmaps("OverlayIconPixmap");
        declareText("AttentionIconName", "");
        declareNoPixmaps("AttentionIconPixmap");
        declareText("AttentionMovieName", "");
        declareText("AttentionAccessibleDesc", "");
        declareProperty("XAyatanaOrderingIndex", [] { return std::uint32_t{0}; });
        declareProperty("IconThemePath", [this] { return item_.needs_.iconThemePath; });
    }

    void declareChangingProperties() {
        declareProperty("IconName", [this] { return item_.shown_.iconName; });
        declareProperty("IconPixmap", [this] { return pixmaps(); });
        declareProperty("XAyatanaLabel", [this] { return item_.shown_.label; });
        declareProperty("XAyatanaLabelGuide", [this] { return item_.shown_.labelGuide; });
        // Without an image: the item itself is right beside it.
        declareProperty("ToolTip", [this] {
            return BusToolTip("", BusPixmaps(), item_.shown_.toolTipTitle, item_.shown_.toolTipText);
        });
        // `emitChange` reads it too, so a read does not prove that a panel has taken the item.
        object_.property(spokenName, [this] { return item_.shown_.spoken; }, BusObject::Change::told);
    }

    void declareClicks() {
        // A middle click does what a left click does: some panels open the menu with the left button. A panel
        // that leaves the menu to the item gets our drop-down.
        for (const char* method : {"Activate", "SecondaryActivate", "ContextMenu"}) {
            object_.method(method, {"x", "y"}, {}, [this](std::int32_t x, std::int32_t y) {
                item_.activateSoon(item_.desktopPosition(x, y));
            });
        }
        object_.method("XAyatanaSecondaryActivate", {"timestamp"}, {}, [this](std::uint32_t) {
            item_.activateSoon(std::nullopt);
        });
        object_.method("Scroll", {"delta", "orientation"}, {}, [](std::int32_t, const std::string&) {});
        object_.method("ProvideXdgActivationToken", {"token"}, {}, [this](const std::string& token) {
            item_.activationToken_ = token;
        });
    }

    void declareSignals() {
        for (const char* signal :
             {"NewTitle", "NewIcon", "NewAttentionIcon", "NewOverlayIcon", "NewMenu", "NewToolTip"}) {
            object_.signal<>(signal);
        }
        object_.signal<std::string>("NewStatus", {"status"});
        object_.signal<std::string>("NewIconThemePath", {"path"});
        object_.signal<std::string, std::string>("XAyatanaNewLabel", {"label", "guide"});
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
    BusObject object_;
};

NotifierStatusItem::NotifierStatusItem(Needs needs)
    : needs_(std::move(needs)),
      pixmaps_(needs_.painter, needs_.screenScales),
      menu_(needs_.loop, needs_.bus, needs_.menu, needs_.iconThemePath),
      hosts_(needs_.bus, needs_.processNames),
      registration_(
          {
              .loop = needs_.loop,
              .bus = needs_.bus,
              .wasRead = [this] { return wasRead(); },
              .forgetReaders = [this] { itemWasRead_ = menuWasRead_ = false; },
          },
          needs_.registrationPatience) {
    menu_.onRead = [this] { menuRead(); };
    hosts_.onChange = [this] { hostChanged(); };
    colorSubscription_ = needs_.colors.onChange([this] { refresh(); });
    needs_.panelTheme.onChange = [this] { refresh(); };
    stateSubscription_ = needs_.bus.onStateChange([this] { busChanged(); });
    refresh();
    busChanged();
}

NotifierStatusItem::~NotifierStatusItem() {
    needs_.panelTheme.onChange = nullptr;
}

void NotifierStatusItem::show(const ItemState& state) {
    state_ = state;
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
    // Registered by the connection's unique name: some watchers notice a well-known name late, and then show
    // the item without its menu, or not at all.
    exported_ = std::make_unique<Exported>(*this);
    if (exported_->publish()) {
        registration_.setService(needs_.bus.uniqueName());
    } else {
        exported_.reset();
    }
}

void NotifierStatusItem::hostChanged() {
    needs_.colors.setFollowsPanel(hosts_.host().hasOwnDarkMode);
    needs_.panelTheme.follow(hosts_.host().theme);
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
        state_.ink, hosts_.host(),
        {
            .panelIsDark = needs_.colors.panelIsDark(),
            .themeIsDark = needs_.panelTheme.isDark(),
            .desktopIsDark = needs_.colors.desktopIsDark(),
            .fallback = fallbackInk_,
        });
    const ItemPresentation before = std::exchange(
        shown_, present(state_, hosts_.host(), ink, !needs_.iconThemePath.empty(), needs_.painter));
    if (exported_ && hasWatcher() && shown_ != before) {
        exported_->tellDifferences(before, shown_);
    }
    if (shown_.showsText != before.showsText && onShowsTextChange) {
        onShowsTextChange();
    }
}

void NotifierStatusItem::menuRead() {
    const bool isFirst = !std::exchange(menuWasRead_, true);
    // A panel that reads the menu has read the label, and listens.
    if (isFirst && exported_ && hosts_.host().ignoresFirstLabel && !shown_.label.empty()) {
        exported_->tellAnotherLabel(shown_);
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
