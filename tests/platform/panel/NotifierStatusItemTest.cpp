// The status item as panels find, read and click it.
#include "platform/panel/NotifierStatusItem.h"

#include "tests/platform/bus/BusTest.h"
#include "tests/platform/panel/FakePainter.h"

#include "platform/bus/BusObject.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <map>
#include <optional>
#include <tuple>
#include <variant>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Form = StatusItem::PanelFace;
using BusPixmap = std::tuple<std::int32_t, std::int32_t, std::vector<std::uint8_t>>;
using Pixmaps = std::vector<BusPixmap>;
using ToolTip = std::tuple<std::string, Pixmaps, std::string, std::string>;
using Value =
    std::variant<std::monostate, bool, std::int32_t, std::uint32_t, std::string, BusPath, Pixmaps, ToolTip>;
using Properties = std::map<std::string, Value>;

constexpr const char* itemInterface = "org.kde.StatusNotifierItem";

class EmptyMenu final : public PanelMenu {
public:
    [[nodiscard]] std::vector<PanelMenuRow> rows() const override { return {}; }

    void choose(int) override {}

    void willRead() override {}

    void didShow() override {}

    void didHide() override {}
};

/// A panel that keeps the list of items too.
class Panel {
public:
    explicit Panel(BusPeer& ofPanel)
        : peer(ofPanel), watcher_(peer.link(), "/StatusNotifierWatcher", PanelHostFinder::watcherName) {
        watcher_.method("RegisterStatusNotifierItem", {}, {}, [this](const std::string& service) {
            registered.push_back(service);
        });
        EXPECT_TRUE(watcher_.publish());
        peer.requestName(PanelHostFinder::watcherName);
    }

    BusPeer& peer;
    std::vector<std::string> registered;

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
            .iconThemePath = "/icons",
            .processName = [this](unsigned) { return process_; },
            .registrationPatience = registrationPatience,
        });
        item_->setFace({.activeBars = 2});
    }

    /// With a panel that is called as `process` and has taken the item.
    void showIn(const std::string& process) {
        Panel& panel = addPanel();
        makeItem(process);
        ASSERT_TRUE(runUntilRegistered(panel));
        panel.peer.recordSignals("type='signal',path='/StatusNotifierItem'");
        ASSERT_TRUE(runUntilHeardBy(panel.peer));
    }

    Panel& addPanel() { return *panels_.emplace_back(std::make_unique<Panel>(addPeer())); }

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
    std::string process_;
    std::vector<std::unique_ptr<Panel>> panels_;
    std::optional<NotifierStatusItem> item_;
};

const StatusFace textFace{
    .activeBars = 4, .title = "42 ms", .figure = "42", .widestTitle = "888 ms", .textSlot = 42};

} // namespace

TEST_F(NotifierStatusItemTest, ItRegistersByTheNameOfItsConnection) {
    const Panel& panel = addPanel();
    makeItem();

    ASSERT_TRUE(runUntilRegistered(panel));

    EXPECT_THAT(panel.registered, ElementsAre(bus_.uniqueName()));
}

TEST_F(NotifierStatusItemTest, ItRegistersWithAWatcherThatComesLate) {
    makeItem();
    ASSERT_TRUE(runUntilConnected());

    const Panel& panel = addPanel();

    EXPECT_TRUE(runUntilRegistered(panel));
}

TEST_F(NotifierStatusItemTest, ItRegistersAgainWithEachNewWatcher) {
    Panel& first = addPanel();
    makeItem();
    ASSERT_TRUE(runUntilRegistered(first));
    first.peer.releaseName(PanelHostFinder::watcherName);

    const Panel& second = addPanel();

    EXPECT_TRUE(runUntilRegistered(second));
}

TEST_F(NotifierStatusItemTest, ItRegistersAgainWhenTheBusComesBack) {
    ASSERT_TRUE(runUntilRegistered((makeItem(), addPanel())));
    stopBusAndPanels();
    ASSERT_TRUE(runUntil([this] { return !item_->hasWatcher(); }));
    ASSERT_TRUE(daemon_.start());

    const Panel& panel = addPanel();

    EXPECT_TRUE(runUntilRegistered(panel));
}

TEST_F(NotifierStatusItemTest, AnItemThatNobodyReadsIsRegisteredAgainABoundedNumberOfTimes) {
    const Panel& panel = addPanel();
    makeItem("", patience);

    ASSERT_TRUE(runUntilRegistered(panel, 1 + WatcherRegistration::mostRepetitions));

    runFor(4 * patience);
    EXPECT_EQ(panel.registered.size(), 1 + WatcherRegistration::mostRepetitions);
}

TEST_F(NotifierStatusItemTest, AnItemThatHasBeenReadIsNotRegisteredAgain) {
    const Panel& panel = addPanel();
    makeItem("", 2 * patience);
    ASSERT_TRUE(runUntilRegistered(panel));
    (void)properties();

    runFor(6 * patience);

    EXPECT_EQ(panel.registered.size(), 1U);
}

TEST_F(NotifierStatusItemTest, TellingOfAChangeIsNotTakenForReading) {
    const Panel& panel = addPanel();
    makeItem("", 2 * patience);
    ASSERT_TRUE(runUntilRegistered(panel));
    item_->setAccessibilityValue("Good");

    EXPECT_TRUE(runUntilRegistered(panel, 2));
}

TEST_F(NotifierStatusItemTest, APanelThatHasNotReadTheMenuAtOnceHasNotTakenTheItem) {
    const Panel& panel = addPanel();
    makeItem("gnome-shell", 2 * patience);
    ASSERT_TRUE(runUntilRegistered(panel));
    (void)properties();

    EXPECT_TRUE(runUntilRegistered(panel, 2));
}

TEST_F(NotifierStatusItemTest, AfterReadingTheMenuSuchAPanelHasTakenTheItem) {
    Panel& panel = addPanel();
    makeItem("gnome-shell", 2 * patience);
    ASSERT_TRUE(runUntilRegistered(panel));
    const auto answer = panel.peer.call(
        {bus_.uniqueName(), DBusMenu::path, "com.canonical.dbusmenu"}, "GetLayout", std::int32_t{0},
        std::int32_t{-1}, std::vector<std::string>());
    ASSERT_TRUE(runUntilAnswered(answer));

    runFor(6 * patience);

    EXPECT_EQ(panel.registered.size(), 1U);
}

TEST_F(NotifierStatusItemTest, ItTellsWhetherThereIsAWatcher) {
    makeItem();
    std::vector<bool> told;
    item_->onWatcherChange = [&] { told.push_back(item_->hasWatcher()); };
    ASSERT_TRUE(runUntilConnected());
    EXPECT_FALSE(item_->hasWatcher());

    Panel& panel = addPanel();
    ASSERT_TRUE(runUntilRegistered(panel));
    panel.peer.releaseName(PanelHostFinder::watcherName);

    ASSERT_TRUE(runUntil([&told] { return told.size() == 2; }));
    EXPECT_THAT(told, ElementsAre(true, false));
}

TEST_F(NotifierStatusItemTest, WithoutABusThereIsNoWatcher) {
    BusConnection noBus(loop_, "");
    const NotifierStatusItem item({
        .loop = loop_,
        .bus = noBus,
        .painter = painter_,
        .menu = menu_,
        .colors = colors_,
    });
    ASSERT_TRUE(runUntil([&noBus] { return noBus.state() == BusConnection::State::unavailable; }));

    EXPECT_FALSE(item.hasWatcher());
}

TEST_F(NotifierStatusItemTest, ItsFixedPropertiesSayWhatItIs) {
    showIn("");

    const Properties values = properties();

    EXPECT_EQ(std::get<std::string>(values.at("Category")), "SystemServices");
    EXPECT_EQ(std::get<std::string>(values.at("Id")), "tarnwick");
    EXPECT_EQ(std::get<std::string>(values.at("Title")), "Tarnwick");
    EXPECT_EQ(std::get<std::string>(values.at("Status")), "Active");
    EXPECT_EQ(std::get<std::int32_t>(values.at("WindowId")), 0);
    EXPECT_FALSE(std::get<bool>(values.at("ItemIsMenu")));
    EXPECT_EQ(std::get<BusPath>(values.at("Menu")).text, DBusMenu::path);
    EXPECT_EQ(std::get<std::string>(values.at("IconThemePath")), "/icons");
    EXPECT_EQ(std::get<std::string>(values.at("AttentionIconName")), "");
    EXPECT_EQ(std::get<std::string>(values.at("OverlayIconName")), "");
    EXPECT_THAT(std::get<Pixmaps>(values.at("AttentionIconPixmap")), IsEmpty());
}

TEST_F(NotifierStatusItemTest, TheIconComesInAllSizesInTheOrderOfTheNetwork) {
    showIn("lxqt-panel");

    const auto pixmaps = std::get<Pixmaps>(properties().at("IconPixmap"));

    ASSERT_EQ(pixmaps.size(), pixmapHeights({1, 2}).size());
    EXPECT_EQ(std::get<0>(pixmaps[1]), 22);
    EXPECT_EQ(std::get<1>(pixmaps[1]), 22);
    const std::vector<std::uint8_t>& bytes = std::get<2>(pixmaps[1]);
    ASSERT_EQ(bytes.size(), 22U * 22U * 4U);
    EXPECT_THAT(
        std::vector<std::uint8_t>(bytes.begin(), bytes.begin() + 4), ElementsAre(0x80, 0xF4, 0xF4, 0xF2));
}

TEST_F(NotifierStatusItemTest, AWideIconKeepsItsHeight) {
    showIn("waybar");

    const auto pixmaps = std::get<Pixmaps>(properties().at("IconPixmap"));

    EXPECT_EQ(std::get<0>(pixmaps[1]), 66);
    EXPECT_EQ(std::get<1>(pixmaps[1]), 22);
}

TEST_F(NotifierStatusItemTest, NothingIsPaintedUntilAPanelReadsTheIcon) {
    showIn("lxqt-panel");

    item_->setFace(textFace);
    ASSERT_TRUE(runUntilHeardBy(panels_.front()->peer));

    EXPECT_EQ(painter_.paintings, 0);
}

TEST_F(NotifierStatusItemTest, TheToolTipHasTitleAndText) {
    showIn("xfce4-panel");
    item_->setToolTip("example.org\n42 ms");

    const auto toolTip = std::get<ToolTip>(properties().at("ToolTip"));

    EXPECT_EQ(std::get<2>(toolTip), "Tarnwick");
    EXPECT_EQ(std::get<3>(toolTip), "example.org\n42 ms");
}

TEST_F(NotifierStatusItemTest, TheLabelGoesToEveryPanel) {
    showIn("lxqt-panel");
    item_->setFace(textFace);

    const Properties values = properties();

    EXPECT_EQ(std::get<std::string>(values.at("XAyatanaLabel")), "42 ms");
    EXPECT_EQ(std::get<std::string>(values.at("XAyatanaLabelGuide")), "888 ms");
}

TEST_F(NotifierStatusItemTest, TextThatIsNoTextDoesNotCostTheConnection) {
    showIn("xfce4-panel");

    item_->setToolTip("host \xFF\xFE");

    EXPECT_EQ(std::get<3>(std::get<ToolTip>(properties().at("ToolTip"))), "host \uFFFD\uFFFD");
}

TEST_F(NotifierStatusItemTest, TheIconGoesByNameWhereThePanelRecolorsIt) {
    showIn("xfce4-panel");

    EXPECT_EQ(text("IconName"), "tarnwick-bars-2-symbolic");
}

TEST_F(NotifierStatusItemTest, AssistiveTechnologyIsToldTheValue) {
    showIn("gnome-shell");

    item_->setAccessibilityValue("Excellent");

    EXPECT_EQ(text("IconAccessibleDesc"), "Tarnwick: Excellent");
}

TEST_F(NotifierStatusItemTest, WhatIsSetAgainIsNotTold) {
    showIn("xfce4-panel");
    item_->setFace(textFace);
    item_->setToolTip("42 ms");

    EXPECT_THAT(
        signalsAfter([this] {
            item_->setFace(textFace);
            item_->setToolTip("42 ms");
        }),
        IsEmpty());
}

TEST_F(NotifierStatusItemTest, AnotherIconIsToldAsThat) {
    showIn("xfce4-panel");

    EXPECT_THAT(signalsAfter([this] { item_->setFace({.activeBars = 3}); }), ElementsAre("NewIcon"));
}

TEST_F(NotifierStatusItemTest, AtALabelAnotherTitleIsANewLabelOnly) {
    showIn("gnome-shell");
    item_->setFace(textFace);
    StatusFace next = textFace;
    next.title = "43 ms";
    next.figure = "43";

    EXPECT_THAT(signalsAfter([&] { item_->setFace(next); }), ElementsAre("XAyatanaNewLabel"));
}

TEST_F(NotifierStatusItemTest, InASquareAnotherFigureIsANewIconAndLabel) {
    showIn("xfce4-panel");
    item_->setFace(textFace);
    StatusFace next = textFace;
    next.title = "43 ms";
    next.figure = "43";

    EXPECT_THAT(signalsAfter([&] { item_->setFace(next); }), ElementsAre("NewIcon", "XAyatanaNewLabel"));
}

TEST_F(NotifierStatusItemTest, AnotherToolTipIsToldAsThat) {
    showIn("xfce4-panel");

    EXPECT_THAT(signalsAfter([this] { item_->setToolTip("43 ms"); }), ElementsAre("NewToolTip"));
}

TEST_F(NotifierStatusItemTest, AnotherSpokenValueIsAChangeOfItsProperty) {
    showIn("xfce4-panel");

    EXPECT_THAT(
        signalsAfter([this] { item_->setAccessibilityValue("Good"); }),
        ElementsAre("PropertiesChanged", "IconAccessibleDesc"));
}

TEST_F(NotifierStatusItemTest, AnotherFormIsANewIcon) {
    showIn("lxqt-panel");
    item_->setFace(textFace);

    EXPECT_THAT(signalsAfter([this] { item_->setPanelFace(Form::wide); }), ElementsAre("NewIcon"));
}

TEST_F(NotifierStatusItemTest, WhereNobodyTellsHowDarkThePanelIsTheFallbackHolds) {
    showIn("some-panel");

    EXPECT_THAT(signalsAfter([this] { item_->setFallbackInk(Ink::light); }), ElementsAre("NewIcon"));

    const auto pixmaps = std::get<Pixmaps>(properties().at("IconPixmap"));
    EXPECT_EQ(std::get<2>(pixmaps.front())[1], 0xF4);
}

TEST_F(NotifierStatusItemTest, AClickSaysWhereItWasWhereThePanelTells) {
    showIn("xfce4-panel");
    std::optional<ScreenPoint> click;
    item_->onActivate = [&click](std::optional<ScreenPoint> at) { click = at; };

    call("Activate", std::int32_t{1200}, std::int32_t{30});

    EXPECT_TRUE(runUntil([&click] { return click == ScreenPoint{.x = 1200, .y = 30}; }));
}

TEST_F(NotifierStatusItemTest, AClickInsideAnItemSaysNothingOfItsPlaceOnTheDesktop) {
    showIn("waybar");
    int clicks = 0;
    std::optional<ScreenPoint> click;
    item_->onActivate = [&](std::optional<ScreenPoint> at) {
        click = at;
        ++clicks;
    };

    call("Activate", std::int32_t{5}, std::int32_t{9});

    ASSERT_TRUE(runUntil([&clicks] { return clicks == 1; }));
    EXPECT_EQ(click, std::nullopt);
}

TEST_F(NotifierStatusItemTest, OtherClicksActivateTooAndScrollingDoesNothing) {
    showIn("xfce4-panel");
    int clicks = 0;
    item_->onActivate = [&clicks](std::optional<ScreenPoint>) { ++clicks; };

    call("Scroll", std::int32_t{120}, std::string("vertical"));
    call("SecondaryActivate", std::int32_t{1}, std::int32_t{1});
    call("ContextMenu", std::int32_t{1}, std::int32_t{1});
    call("XAyatanaSecondaryActivate", std::uint32_t{7});

    ASSERT_TRUE(runUntil([&clicks] { return clicks >= 3; }));
    EXPECT_EQ(clicks, 3);
}

TEST_F(NotifierStatusItemTest, AnActivationTokenIsGivenOutOnce) {
    showIn("plasmashell");

    call("ProvideXdgActivationToken", std::string("token-1"));

    EXPECT_EQ(item_->takeActivationToken(), "token-1");
    EXPECT_EQ(item_->takeActivationToken(), "");
}

TEST_F(NotifierStatusItemTest, CallsWithWrongArgumentsAreErrors) {
    showIn("xfce4-panel");

    EXPECT_EQ(call("Activate", std::string("here"))->error(), BusError::invalidArguments);
    EXPECT_EQ(call("Explode")->error(), "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_F(NotifierStatusItemTest, AnotherPanelIsToldTheItemInItsOwnForm) {
    showIn("kded5");
    item_->setFace(textFace);
    process_ = "waybar";
    Panel& panel = *panels_.front();

    EXPECT_THAT(
        signalsAfter([&panel, this] {
            panel.peer.requestName("org.kde.StatusNotifierHost-12");
            ASSERT_TRUE(runUntil(
                [this] { return std::get<0>(std::get<Pixmaps>(properties().at("IconPixmap"))[0]) == 48; }));
        }),
        ElementsAre("NewIcon"));
}

TEST_F(NotifierStatusItemTest, NothingRunsWhileNothingChanges) {
    showIn("xfce4-panel");
    (void)properties();
    runFor(0.2);

    EXPECT_FALSE(loop_.runOne(1.5));
}

} // namespace tarnwick
