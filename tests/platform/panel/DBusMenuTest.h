// A menu on a private bus, and a panel that reads it and hears its signals.
#pragma once

#include "platform/panel/DBusMenu.h"
#include "tests/platform/bus/BusTest.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

namespace tarnwick {

using Ids = std::vector<std::int32_t>;
using Names = std::vector<std::string>;
using Value = std::variant<std::monostate, bool, std::uint32_t, std::string, Names, std::vector<Names>>;
using Properties = std::map<std::string, Value>;
using RowLayout = std::tuple<std::int32_t, Properties, std::vector<std::variant<std::monostate>>>;
using Layout = std::tuple<std::int32_t, Properties, std::vector<std::variant<RowLayout>>>;
using Row = std::tuple<std::int32_t, Properties>;
using Event = std::tuple<std::int32_t, std::string, std::variant<std::string>, std::uint32_t>;

class ListedMenu final : public PanelMenu {
public:
    [[nodiscard]] std::vector<PanelMenuRow> rows() override { return list; }

    void choose(int id) override { chosen.push_back(id); }

    void willRead() override {
        ++reads;
        if (onRead) {
            onRead();
        }
    }

    void didShow() override { ++shows; }

    void didHide() override { ++hides; }

    void change() const { onChange(); }

    std::vector<PanelMenuRow> list{
        {.id = 1, .label = "Excellent · 23 ms"},
        {.id = 2, .isSeparator = true},
        {.id = 3, .label = "Quit", .iconName = "exit", .shortcutKey = "Q"},
    };
    std::function<void()> onRead;
    std::vector<int> chosen;
    int reads = 0;
    int shows = 0;
    int hides = 0;
};

class DBusMenuTest : public BusTest {
protected:
    static constexpr const char* invalidArguments = BusError::invalidArguments;

    inline static const std::variant<std::string> noData;

    void SetUp() override {
        BusTest::SetUp();
        ASSERT_TRUE(runUntilConnected());
        panel_ = &addPeer();
        panel_->recordSignals("type='signal',interface='com.canonical.dbusmenu'");
    }

    [[nodiscard]] BusPeer::Target target() const {
        return {bus_.uniqueName(), DBusMenu::path, "com.canonical.dbusmenu"};
    }

    template<typename... Arguments>
    [[nodiscard]] std::shared_ptr<BusPeer::Answer> call(
        const std::string& method, const Arguments&... arguments) {
        auto answer = panel_->call(target(), method, arguments...);
        EXPECT_TRUE(runUntilAnswered(answer));
        return answer;
    }

    std::shared_ptr<BusPeer::Answer> event(std::int32_t id, const std::string& name) {
        return call("Event", id, name, noData, std::uint32_t{0});
    }

    [[nodiscard]] std::pair<std::uint32_t, Layout> layout(
        std::int32_t parent = 0, std::int32_t depth = -1, const Names& names = {}) {
        const auto answer = call("GetLayout", parent, depth, names);
        EXPECT_EQ(answer->error(), "");
        const auto [revision, result] = answer->values<std::uint32_t, Layout>();
        return {revision, result};
    }

    [[nodiscard]] static Properties rowIn(const Layout& layout, std::size_t index) {
        return std::get<1>(std::get<RowLayout>(std::get<2>(layout).at(index)));
    }

    [[nodiscard]] static std::string text(const Properties& properties, const std::string& name) {
        return std::get<std::string>(properties.at(name));
    }

    [[nodiscard]] static std::vector<int> ids(const Layout& layout) {
        std::vector<int> result;
        for (const auto& child : std::get<2>(layout)) {
            result.push_back(std::get<0>(std::get<RowLayout>(child)));
        }
        return result;
    }

    [[nodiscard]] std::vector<std::string> signalsSoFar() {
        EXPECT_TRUE(runUntilHeardBy(*panel_));
        return panel_->takeSignals();
    }

    ListedMenu list_;
    DBusMenu menu_{loop_, bus_, list_, "/icons"};
    BusPeer* panel_ = nullptr;
};

} // namespace tarnwick
