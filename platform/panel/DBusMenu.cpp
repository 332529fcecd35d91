#include "platform/panel/DBusMenu.h"

#include "core/Lifeline.h"
#include "platform/bus/BusObject.h"
#include "platform/bus/NameWatch.h"
#include "platform/panel/MenuProperties.h"

#include <algorithm>
#include <cstdint>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

namespace tarnwick {

namespace {

constexpr const char* menuInterface = "com.canonical.dbusmenu";
constexpr std::uint32_t protocolVersion = 3;
constexpr int rootId = 0;

using BusRow = std::tuple<std::int32_t, MenuProperties>;
/// The last part is always empty: there are no submenus.
using BusRowLayout = std::tuple<std::int32_t, MenuProperties, std::vector<std::variant<std::monostate>>>;
using BusLayout = std::tuple<std::int32_t, MenuProperties, std::vector<std::variant<BusRowLayout>>>;
using EventData = std::variant<std::monostate>;
using BusEvent = std::tuple<std::int32_t, std::string, EventData, std::uint32_t>;
using RemovedProperties = std::tuple<std::int32_t, std::vector<std::string>>;
using Ids = std::vector<std::int32_t>;
using Names = std::vector<std::string>;

BusError unknownId(std::int32_t id) {
    return {.name = BusError::invalidArguments, .text = "there is no menu item " + std::to_string(id)};
}

} // namespace

/// The object on one connection.
class DBusMenu::Exported {
public:
    explicit Exported(DBusMenu& menu)
        : menu_(menu), object_(*menu.bus_.link(), path, menuInterface), rows_(menu.menu_.rows()) {
        declareReading();
        declareEvents();
        declareProperties();
        object_.signal<std::vector<BusRow>, std::vector<RemovedProperties>>(
            "ItemsPropertiesUpdated", {"updatedProps", "removedProps"});
        object_.signal<std::uint32_t, std::int32_t>("LayoutUpdated", {"revision", "parent"});
        object_.signal<std::int32_t, std::uint32_t>("ItemActivationRequested", {"id", "timestamp"});
    }

    [[nodiscard]] bool publish() { return object_.publish(); }

    /// Reports what has changed since the last report.
    void update() {
        const std::vector<PanelMenuRow> before = std::exchange(rows_, menu_.menu_.rows());
        if (before == rows_) {
            return;
        }
        if (haveSameLayout(before, rows_)) {
            emitProperties(menuChanges(before, rows_));
        } else {
            object_.emit("LayoutUpdated", ++revision_, std::int32_t{rootId});
        }
    }

private:
    void declareReading() {
        object_.method(
            "GetLayout", {"parentId", "recursionDepth", "propertyNames"}, {"revision", "layout"},
            [this](std::int32_t parent, std::int32_t depth, const Names& names) {
                return layout(parent, depth, names);
            });
        object_.method(
            "GetGroupProperties", {"ids", "propertyNames"}, {"properties"},
            [this](const Ids& ids, const Names& names) { return groupProperties(ids, names); });
        object_.method(
            "GetProperty", {"id", "name"}, {"value"},
            [this](std::int32_t id, const std::string& name) { return property(id, name); });
    }

    void declareEvents() {
        object_.method(
            "Event", {"id", "eventId", "data", "timestamp"}, {},
            [this](std::int32_t id, const std::string& event, const EventData&, std::uint32_t) {
                return receiveOne(id, event);
            });
        object_.method("EventGroup", {"events"}, {"idErrors"}, [this](const std::vector<BusEvent>& events) {
            return receiveGroup(events);
        });
        object_.method("AboutToShow", {"id"}, {"needUpdate"}, [this](std::int32_t id) {
            return isKnown(id) ? BusOutcome<bool>(aboutToShow(id)) : unknownId(id);
        });
        object_.method("AboutToShowGroup", {"ids"}, {"updatesNeeded", "idErrors"}, [this](const Ids& ids) {
            return aboutToShowGroup(ids);
        });
    }

    void declareProperties() {
        object_.property("Version", [] { return protocolVersion; });
        object_.property("TextDirection", [] { return std::string("ltr"); });
        object_.property("Status", [] { return std::string("normal"); });
        object_.property("IconThemePath", [this] {
            return menu_.iconThemePath_.empty() ? Names() : Names{menu_.iconThemePath_};
        });
    }

    BusOutcome<std::tuple<std::uint32_t, BusLayout>> layout(
        std::int32_t parent, std::int32_t depth, const Names& names) {
        update();
        if (!isKnown(parent)) {
            return unknownId(parent);
        }
        std::vector<std::variant<BusRowLayout>> children;
        if (parent == rootId && depth != 0) {
            for (const PanelMenuRow& row : rows_) {
                children.emplace_back(BusRowLayout(row.id, selected(menuProperties(row), names), {}));
            }
        }
        if (menu_.onRead) {
            menu_.onRead();
        }
        return std::tuple(
            revision_, BusLayout(parent, selected(properties(parent), names), std::move(children)));
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
                result.emplace_back(id, selected(properties(id), names));
            }
        }
        return result;
    }

    BusOutcome<MenuPropertyValue> property(std::int32_t id, const std::string& name) {
        update();
        if (!isKnown(id)) {
            return unknownId(id);
        }
        MenuProperties known = properties(id);
        known.insert(defaultMenuProperties().begin(), defaultMenuProperties().end());
        if (const auto found = known.find(name); found != known.end()) {
            return found->second;
        }
        return BusError{.name = BusError::invalidArguments, .text = "menu items have no property " + name};
    }

    BusOutcome<NoResult> receiveOne(std::int32_t id, const std::string& event) {
        if (!isKnown(id)) {
            return unknownId(id);
        }
        receive(id, event);
        return NoResult();
    }

    BusOutcome<Ids> receiveGroup(const std::vector<BusEvent>& events) {
        Ids unknown;
        for (const auto& [id, event, data, timestamp] : events) {
            if (isKnown(id)) {
                receive(id, event);
            } else {
                unknown.push_back(id);
            }
        }
        if (!unknown.empty() && unknown.size() == events.size()) {
            return unknownId(unknown.front());
        }
        return unknown;
    }

    void receive(std::int32_t id, const std::string& event) {
        if (event == "clicked" && id != rootId) {
            // A click closes the menu, whether or not the panel says so. The panel gets its answer first:
            // the choice may open windows, or end the program.
            closed();
            menu_.loop_.post(lifeline_.guarded([&menu = menu_.menu_, id] { menu.choose(id); }));
        } else if (event == "opened" && id == rootId) {
            opened();
        } else if (event == "closed" && id == rootId) {
            closed();
        } else {
            // Pointing at a row shows that the menu is still open.
            menu_.menu_.willRead();
        }
    }

    void opened() {
        menu_.menu_.didShow();
        update();
        panel_ = menu_.bus_.link()->currentSender();
        watchPanel();
    }

    /// Several panels may have the menu: only the one that shows it can close it.
    void closed() {
        if (panel_.empty() || panel_ == menu_.bus_.link()->currentSender()) {
            hide();
        }
    }

    void hide() {
        panel_.clear();
        panelWatch_.reset();
        menu_.menu_.didHide();
    }

    /// A panel that ends while it shows the menu never reports that the menu is closed.
    void watchPanel() {
        panelWatch_ = watchName(menu_.bus_, panel_, [this](const std::string& owner, NameNews) {
            if (owner.empty()) {
                hide();
            }
        });
    }

    bool aboutToShow(std::int32_t id) {
        const std::vector<PanelMenuRow> before = rows_;
        if (id == rootId) {
            menu_.menu_.willRead();
        }
        update();
        return id == rootId && rows_ != before;
    }

    BusOutcome<std::tuple<Ids, Ids>> aboutToShowGroup(const Ids& ids) {
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
            return unknownId(unknown.front());
        }
        return std::tuple(changed, unknown);
    }

    void emitProperties(const std::vector<MenuRowChange>& changes) {
        std::vector<BusRow> updated;
        std::vector<RemovedProperties> removed;
        for (const MenuRowChange& change : changes) {
            if (!change.updated.empty()) {
                updated.emplace_back(change.id, change.updated);
            }
            if (!change.removed.empty()) {
                removed.emplace_back(change.id, change.removed);
            }
        }
        if (!updated.empty() || !removed.empty()) {
            object_.emit("ItemsPropertiesUpdated", updated, removed);
        }
    }

    [[nodiscard]] const PanelMenuRow* row(std::int32_t id) const {
        const auto found = std::ranges::find(rows_, id, &PanelMenuRow::id);
        return found == rows_.end() ? nullptr : &*found;
    }

    [[nodiscard]] bool isKnown(std::int32_t id) const { return id == rootId || row(id) != nullptr; }

    [[nodiscard]] MenuProperties properties(std::int32_t id) const {
        const PanelMenuRow* found = row(id);
        return found == nullptr ? rootMenuProperties() : menuProperties(*found);
    }

    DBusMenu& menu_;
    BusObject object_;
    std::vector<PanelMenuRow> rows_; ///< as last reported to panels
    std::uint32_t revision_ = 1;
    std::string panel_;       ///< unique name of the panel that shows the menu; empty while it is closed
    Subscription panelWatch_; ///< while it is open
    Lifeline lifeline_;
};

DBusMenu::DBusMenu(RunLoop& loop, BusConnection& bus, PanelMenu& menu, std::string iconThemePath)
    : loop_(loop), bus_(bus), menu_(menu), iconThemePath_(std::move(iconThemePath)) {
    menu_.onChange = [this] {
        if (exported_) {
            exported_->update();
        }
    };
    stateSubscription_ = bus_.onStateChange([this] { busChanged(); });
    busChanged();
}

DBusMenu::~DBusMenu() {
    menu_.onChange = nullptr;
}

void DBusMenu::busChanged() {
    if (bus_.state() != BusConnection::State::connected) {
        if (exported_) {
            // Without the bus, no panel can report that it has closed the menu.
            menu_.didHide();
        }
        exported_.reset();
        return;
    }
    exported_ = std::make_unique<Exported>(*this);
    if (!exported_->publish()) {
        exported_.reset();
    }
}

} // namespace tarnwick
