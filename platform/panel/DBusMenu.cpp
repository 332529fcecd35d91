#include "platform/panel/DBusMenu.h"

#include "core/Lifeline.h"
#include "platform/bus/BusCall.h"
#include "platform/bus/BusText.h"
#include "platform/panel/MenuProperties.h"

#include <sdbus-c++/sdbus-c++.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

namespace tarnwick {

namespace {

constexpr const char* interface = "com.canonical.dbusmenu";
constexpr std::uint32_t protocolVersion = 3;
constexpr int rootId = 0;

using BusProperties = std::map<std::string, sdbus::Variant>;
using BusRow = sdbus::Struct<std::int32_t, BusProperties>;
using BusLayout = sdbus::Struct<std::int32_t, BusProperties, std::vector<sdbus::Variant>>;
using BusEvent = sdbus::Struct<std::int32_t, std::string, sdbus::Variant, std::uint32_t>;
using RemovedProperties = sdbus::Struct<std::int32_t, std::vector<std::string>>;
using Ids = std::vector<std::int32_t>;
using Names = std::vector<std::string>;

sdbus::Variant busValue(const MenuPropertyValue& value) {
    if (const auto* keys = std::get_if<MenuShortcut>(&value)) {
        return {std::vector<MenuShortcut>{*keys}};
    }
    if (const auto* text = std::get_if<std::string>(&value)) {
        return {*text};
    }
    return {std::get<bool>(value)};
}

BusProperties busProperties(const MenuProperties& properties) {
    BusProperties result;
    for (const auto& [name, value] : properties) {
        result.emplace(name, busValue(value));
    }
    return result;
}

sdbus::Error unknownId(std::int32_t id) {
    return {"org.freedesktop.DBus.Error.InvalidArgs", "there is no menu item " + std::to_string(id)};
}

} // namespace

/// The object on one connection.
class DBusMenu::Exported {
public:
    explicit Exported(DBusMenu& menu)
        : menu_(menu), object_(sdbus::createObject(*menu.bus_.connection(), path)), rows_(menu.menu_.rows()) {
        registerReading();
        registerEvents();
        registerProperties();
        object_->registerSignal("ItemsPropertiesUpdated")
            .onInterface(interface)
            .withParameters<std::vector<BusRow>, std::vector<RemovedProperties>>(
                "updatedProps", "removedProps");
        object_->registerSignal("LayoutUpdated")
            .onInterface(interface)
            .withParameters<std::uint32_t, std::int32_t>("revision", "parent");
        object_->registerSignal("ItemActivationRequested")
            .onInterface(interface)
            .withParameters<std::int32_t, std::uint32_t>("id", "timestamp");
        object_->finishRegistration();
    }

    /// Tells what has changed since the panel was last told; whether anything has.
    bool update() {
        const std::vector<PanelMenuRow> before = std::exchange(rows_, menu_.menu_.rows());
        if (before == rows_) {
            return false;
        }
        (void)attempt([this, &before] {
            if (haveSameLayout(before, rows_)) {
                emitProperties(menuChanges(before, rows_));
            } else {
                ++revision_;
                object_->emitSignal("LayoutUpdated")
                    .onInterface(interface)
                    .withArguments(revision_, std::int32_t{rootId});
            }
        });
        menu_.bus_.flush();
        return true;
    }

private:
    void registerReading() {
        object_->registerMethod("GetLayout")
            .onInterface(interface)
            .withInputParamNames("parentId", "recursionDepth", "propertyNames")
            .withOutputParamNames("revision", "layout")
            .implementedAs([this](std::int32_t parent, std::int32_t depth, const Names& names) {
                return layout(parent, depth, names);
            });
        object_->registerMethod("GetGroupProperties")
            .onInterface(interface)
            .withInputParamNames("ids", "propertyNames")
            .withOutputParamNames("properties")
            .implementedAs(
                [this](const Ids& ids, const Names& names) { return groupProperties(ids, names); });
        object_->registerMethod("GetProperty")
            .onInterface(interface)
            .withInputParamNames("id", "name")
            .withOutputParamNames("value")
            .implementedAs([this](std::int32_t id, const std::string& name) { return property(id, name); });
    }

    void registerEvents() {
        object_->registerMethod("Event")
            .onInterface(interface)
            .withInputParamNames("id", "eventId", "data", "timestamp")
            .implementedAs(
                [this](std::int32_t id, const std::string& event, const sdbus::Variant&, std::uint32_t) {
                    requireKnown(id);
                    receive(id, event);
                });
        object_->registerMethod("EventGroup")
            .onInterface(interface)
            .withInputParamNames("events")
            .withOutputParamNames("idErrors")
            .implementedAs([this](const std::vector<BusEvent>& events) { return receiveGroup(events); });
        object_->registerMethod("AboutToShow")
            .onInterface(interface)
            .withInputParamNames("id")
            .withOutputParamNames("needUpdate")
            .implementedAs([this](std::int32_t id) {
                requireKnown(id);
                return aboutToShow(id);
            });
        object_->registerMethod("AboutToShowGroup")
            .onInterface(interface)
            .withInputParamNames("ids")
            .withOutputParamNames("updatesNeeded", "idErrors")
            .implementedAs([this](const Ids& ids) { return aboutToShowGroup(ids); });
    }

    void registerProperties() {
        object_->registerProperty("Version").onInterface(interface).withGetter(
            [] { return protocolVersion; });
        object_->registerProperty("TextDirection").onInterface(interface).withGetter([] {
            return std::string("ltr");
        });
        object_->registerProperty("Status").onInterface(interface).withGetter(
            [] { return std::string("normal"); });
        object_->registerProperty("IconThemePath").onInterface(interface).withGetter([this] {
            return menu_.iconThemePath_.empty() ? Names() : Names{validUtf8(menu_.iconThemePath_)};
        });
    }

    std::tuple<std::uint32_t, BusLayout> layout(std::int32_t parent, std::int32_t depth, const Names& names) {
        update();
        requireKnown(parent);
        std::vector<sdbus::Variant> children;
        if (parent == rootId && depth != 0) {
            for (const PanelMenuRow& row : rows_) {
                children.emplace_back(BusLayout(
                    row.id, busProperties(selected(menuProperties(row), names)),
                    std::vector<sdbus::Variant>()));
            }
        }
        if (menu_.onRead) {
            menu_.onRead();
        }
        return {
            revision_,
            BusLayout(parent, busProperties(selected(properties(parent), names)), std::move(children))};
    }

    std::vector<BusRow> groupProperties(Ids ids, const Names& names) {
        update();
        if (ids.empty()) {
            ids = {rootId};
            std::ranges::transform(rows_, std::back_inserter(ids), &PanelMenuRow::id);
        }
        std::vector<BusRow> result;
        for (const std::int32_t id : ids) {
            if (isKnown(id)) {
                result.emplace_back(id, busProperties(selected(properties(id), names)));
            }
        }
        return result;
    }

    sdbus::Variant property(std::int32_t id, const std::string& name) {
        update();
        requireKnown(id);
        const MenuProperties own = properties(id);
        if (const auto found = own.find(name); found != own.end()) {
            return busValue(found->second);
        }
        const MenuProperties& defaults = defaultMenuProperties();
        if (const auto found = defaults.find(name); found != defaults.end()) {
            return busValue(found->second);
        }
        throw sdbus::Error(
            "org.freedesktop.DBus.Error.InvalidArgs", "menu items have no property " + validUtf8(name));
    }

    Ids receiveGroup(const std::vector<BusEvent>& events) {
        Ids unknown;
        for (const BusEvent& event : events) {
            const std::int32_t id = event.get<0>();
            if (isKnown(id)) {
                receive(id, event.get<1>());
            } else {
                unknown.push_back(id);
            }
        }
        if (!unknown.empty() && unknown.size() == events.size()) {
            throw unknownId(unknown.front());
        }
        return unknown;
    }

    void receive(std::int32_t id, const std::string& event) {
        if (event == "clicked" && id != rootId) {
            // A click closes the menu, whether or not the panel says so. It gets its answer first: what is
            // chosen may open windows, or end the program.
            closed();
            menu_.loop_.post(lifeline_.guarded([&menu = menu_.menu_, id] { menu.choose(id); }));
        } else if (event == "opened" && id == rootId) {
            opened();
        } else if (event == "closed" && id == rootId) {
            closed();
        } else {
            // Pointed at, it is still open.
            menu_.menu_.willRead();
        }
    }

    void opened() {
        menu_.menu_.didShow();
        update();
        panel_ = object_->getCurrentlyProcessedMessage()->getSender();
        menu_.loop_.post(lifeline_.guarded([this] { watchPanel(); }));
    }

    void closed() {
        panel_.clear();
        panelMatch_.reset();
        menu_.menu_.didHide();
    }

    /// A panel that goes while it shows the menu will not say any more that it has closed it.
    void watchPanel() {
        if (!panel_.empty()) {
            panelMatch_ = menu_.bus_.addMatch(
                "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
                "member='NameOwnerChanged',arg0='"
                    + panel_ + "'",
                [this](sdbus::Message&) { closed(); });
        }
    }

    bool aboutToShow(std::int32_t id) {
        const std::vector<PanelMenuRow> before = rows_;
        if (id == rootId) {
            menu_.menu_.willRead();
        }
        update();
        return id == rootId && rows_ != before;
    }

    std::tuple<Ids, Ids> aboutToShowGroup(const Ids& ids) {
        Ids changed;
        Ids unknown;
        for (const std::int32_t id : ids) {
            if (!isKnown(id)) {
                unknown.push_back(id);
            } else if (aboutToShow(id)) {
                changed.push_back(id);
            }
        }
        if (!unknown.empty() && unknown.size() == ids.size()) {
            throw unknownId(unknown.front());
        }
        return {changed, unknown};
    }

    void emitProperties(const std::vector<MenuRowChange>& changes) {
        std::vector<BusRow> updated;
        std::vector<RemovedProperties> removed;
        for (const MenuRowChange& change : changes) {
            if (!change.updated.empty()) {
                updated.emplace_back(change.id, busProperties(change.updated));
            }
            if (!change.removed.empty()) {
                removed.emplace_back(change.id, change.removed);
            }
        }
        if (!updated.empty() || !removed.empty()) {
            object_->emitSignal("ItemsPropertiesUpdated")
                .onInterface(interface)
                .withArguments(updated, removed);
        }
    }

    [[nodiscard]] const PanelMenuRow* row(std::int32_t id) const {
        const auto found = std::ranges::find(rows_, id, &PanelMenuRow::id);
        return found == rows_.end() ? nullptr : &*found;
    }

    [[nodiscard]] bool isKnown(std::int32_t id) const { return id == rootId || row(id) != nullptr; }

    void requireKnown(std::int32_t id) const {
        if (!isKnown(id)) {
            throw unknownId(id);
        }
    }

    [[nodiscard]] MenuProperties properties(std::int32_t id) const {
        const PanelMenuRow* found = row(id);
        return found == nullptr ? rootMenuProperties() : menuProperties(*found);
    }

    DBusMenu& menu_;
    std::unique_ptr<sdbus::IObject> object_;
    std::vector<PanelMenuRow> rows_; ///< as the panels were told
    std::uint32_t revision_ = 1;
    std::string panel_;       ///< that shows the menu, by its unique name; empty while none does
    Subscription panelMatch_; ///< likewise
    Lifeline lifeline_;
};

DBusMenu::DBusMenu(RunLoop& loop, BusConnection& bus, PanelMenu& menu, std::string iconThemePath)
    : loop_(loop), bus_(bus), menu_(menu), iconThemePath_(std::move(iconThemePath)) {
    menu_.onChange = [this] {
        if (exported_) {
            exported_->update();
        }
    };
    stateSubscription_ = bus_.onStateChange([this](BusConnection::State) { busChanged(); });
    busChanged();
}

DBusMenu::~DBusMenu() {
    menu_.onChange = nullptr;
}

void DBusMenu::busChanged() {
    if (bus_.state() != BusConnection::State::connected) {
        if (exported_) {
            // Nobody will say any more that the menu has been closed.
            menu_.didHide();
        }
        exported_.reset();
        return;
    }
    if (!attempt([this] { exported_ = std::make_unique<Exported>(*this); })) {
        exported_.reset();
    }
}

} // namespace tarnwick
