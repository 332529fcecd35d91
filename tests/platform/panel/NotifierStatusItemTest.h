// The status item on a private bus, with panels that read it and hear its signals.
#pragma once

#include "platform/panel/NotifierStatusItem.h"
#include "tests/platform/bus/BusTest.h"
#include "tests/platform/panel/FakePainter.h"
#include "tests/platform/theme/ThemeFixture.h"

#include "platform/bus/BusObject.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

namespace tarnwick {

using BusPixmap = std::tuple<std::int32_t, std::int32_t, std::vector<std::uint8_t>>;
using Pixmaps = std::vector<BusPixmap>;
using ToolTip = std::tuple<std::string, Pixmaps, std::string, std::string>;
using Value =
    std::variant<std::monostate, bool, std::int32_t, std::uint32_t, std::string, BusPath, Pixmaps, ToolTip>;
using Properties = std::map<std::string, Value>;

inline constexpr auto itemInterface = "org.kde.StatusNotifierItem";

class EmptyMenu final : public PanelMenu {
public:
    [[nodiscard]] std::vector<PanelMenuRow> rows() override { return {}; }

    void choose(int) override {}

    void willRead() override {}

    void didShow() override {}

    void didHide() override {}
};

/// A panel that keeps the list of items too; not shown: it keeps the list for panels that are yet to come.
class Panel {
public:
    explicit Panel(BusPeer& ofPanel, bool isShown = true)
        : peer(ofPanel), watcher_(peer.link(), "/StatusNotifierWatcher", PanelHostFinder::watcherName) {
        watcher_.property("IsStatusNotifierHostRegistered", [this] { return hasHost; });
        watcher_.signal<>("StatusNotifierHostRegistered");
        hasHost = isShown;
        watcher_.method("RegisterStatusNotifierItem", {}, {}, [this](const std::string& service) {
            registered.push_back(service);
        });
        EXPECT_TRUE(watcher_.publish());
        peer.requestName(PanelHostFinder::watcherName);
    }

    void registerHost() {
        hasHost = true;
        watcher_.emit("StatusNotifierHostRegistered");
    }

    BusPeer& peer;
    std::vector<std::string> registered;
    bool hasHost = true;

private:
    BusObject watcher_;
};

class NotifierStatusItemTest : public BusTest {
protected:
    static constexpr double patience = 0.1;

    void makeItem(std::string process = "", double registrationPatience = 60) {
        process_ = std::move(process);
        item_.emplace(NotifierStatusItem::Needs{
            .loop = loop_,
            .bus = bus_,
            .painter = painter_,
            .menu = menu_,
            .colors = colors_,
            .panelTheme = panelTheme_,
            .processNames = [this](unsigned) { return std::vector{process_}; },
            .iconThemePath = "/icons",
            .registrationPatience = registrationPatience,
        });
        showFace({.activeBars = 2});
    }

    void showFace(const StatusFace& face) {
        state_.face = face;
        item_->show(state_);
    }

    void showToolTip(const std::string& text) {
        state_.toolTip = text;
        item_->show(state_);
    }

    /// With a panel that is called as `process` and has taken the item.
    void showIn(const std::string& process) {
        Panel& panel = addPanel();
        makeItem(process);
        ASSERT_TRUE(runUntilRegistered(panel));
        panel.peer.recordSignals("type='signal',path='/StatusNotifierItem'");
        ASSERT_TRUE(runUntilHeardBy(panel.peer));
    }

    Panel& addPanel(bool isShown = true) {
        return *panels_.emplace_back(std::make_unique<Panel>(addPeer(), isShown));
    }

    void stopBusAndPanels() {
        panels_.clear();
        stopBus();
    }

    [[nodiscard]] bool runUntilRegistered(const Panel& panel, std::size_t times = 1) {
        return runUntil([&panel, times] { return panel.registered.size() >= times; });
    }

    [[nodiscard]] BusPeer::Target target(const char* interface) const {
        return {bus_.uniqueName(), "/StatusNotifierItem", interface};
    }

    template<typename... Arguments>
    std::shared_ptr<BusPeer::Answer> call(const std::string& method, const Arguments&... arguments) {
        auto answer = panels_.front()->peer.call(target(itemInterface), method, arguments...);
        EXPECT_TRUE(runUntilAnswered(answer));
        return answer;
    }

    [[nodiscard]] Properties properties() {
        const auto answer = panels_.front()->peer.call(
            target("org.freedesktop.DBus.Properties"), "GetAll", std::string(itemInterface));
        EXPECT_TRUE(runUntilAnswered(answer));
        return answer->value<Properties>();
    }

    [[nodiscard]] std::string text(const std::string& property) {
        return std::get<std::string>(properties().at(property));
    }

    void readMenu(Panel& panel) {
        const auto answer = panel.peer.call(
            {bus_.uniqueName(), DBusMenu::path, "com.canonical.dbusmenu"}, "GetLayout", std::int32_t{0},
            std::int32_t{-1}, std::vector<std::string>());
        ASSERT_TRUE(runUntilAnswered(answer));
    }

    /// What the panel hears of it.
    [[nodiscard]] std::vector<std::string> signalsAfter(const std::function<void()>& change) {
        EXPECT_TRUE(runUntilHeardBy(panels_.front()->peer));
        (void)panels_.front()->peer.takeSignals();
        change();
        EXPECT_TRUE(runUntilHeardBy(panels_.front()->peer));
        return panels_.front()->peer.takeSignals();
    }

    EmptyMenu menu_;
    FakePainter painter_;
    ColorScheme colors_{bus_};
    test::ThemeFixture theme_;
    ThemeWatch panelTheme_{loop_, theme_.folders};
    std::string process_;
    std::vector<std::unique_ptr<Panel>> panels_;
    std::optional<NotifierStatusItem> item_;
    ItemState state_; ///< that the item shows
};

inline const StatusFace textFace{
    .activeBars = 4, .title = "42 ms", .figure = "42", .widestTitle = "888 ms", .textSlot = 42};

} // namespace tarnwick
