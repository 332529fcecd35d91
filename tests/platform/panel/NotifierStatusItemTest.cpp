// The status item as panels read, hear and click it.
#include "tests/platform/panel/NotifierStatusItemTest.h"

#include "tests/support/CaseName.h"

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Form = StatusItem::Form;

const StatusFace otherText{
    .activeBars = 4, .title = "43 ms", .figure = "43", .widestTitle = "888 ms", .textSlot = 42};
const StatusFace otherBars{
    .activeBars = 3, .title = "42 ms", .figure = "42", .widestTitle = "888 ms", .textSlot = 42};

/// A change of the item, and the signals that this panel hears of it.
struct Change {
    std::string name;
    std::string panel;
    std::function<void(ItemState&)> change;
    std::vector<std::string> told;

    friend void PrintTo(const Change& printed, std::ostream* out) { *out << printed.name; }
};

class ToldChange : public NotifierStatusItemTest, public testing::WithParamInterface<Change> {};

} // namespace

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

    showFace(textFace);
    ASSERT_TRUE(runUntilHeardBy(panels_.front()->peer));

    EXPECT_EQ(painter_.paintings, 0);
}

TEST_F(NotifierStatusItemTest, TheToolTipHasTitleAndText) {
    showIn("xfce4-panel");
    showToolTip("example.org\n42 ms");

    const auto toolTip = std::get<ToolTip>(properties().at("ToolTip"));

    EXPECT_EQ(std::get<2>(toolTip), "Tarnwick");
    EXPECT_EQ(std::get<3>(toolTip), "example.org\n42 ms");
}

TEST_F(NotifierStatusItemTest, TheLabelGoesToEveryPanel) {
    showIn("lxqt-panel");
    showFace(textFace);

    const Properties values = properties();

    EXPECT_EQ(std::get<std::string>(values.at("XAyatanaLabel")), "42 ms");
    EXPECT_EQ(std::get<std::string>(values.at("XAyatanaLabelGuide")), "888 ms");
}

TEST_F(NotifierStatusItemTest, TextThatIsNoTextDoesNotCostTheConnection) {
    showIn("xfce4-panel");

    showToolTip("host \xFF\xFE");

    EXPECT_EQ(std::get<3>(std::get<ToolTip>(properties().at("ToolTip"))), "host \uFFFD\uFFFD");
}

TEST_F(NotifierStatusItemTest, TheIconGoesByNameWhereThePanelRecolorsIt) {
    showIn("xfce4-panel");

    EXPECT_EQ(text("IconName"), "tarnwick-bars-2-symbolic");
}

TEST_F(NotifierStatusItemTest, AssistiveTechnologyIsToldTheValue) {
    showIn("gnome-shell");

    state_.accessibilityValue = "Excellent";
    item_->show(state_);

    EXPECT_EQ(text("IconAccessibleDesc"), "Tarnwick: Excellent");
}

TEST_P(ToldChange, IsToldToThePanelThatShowsTheItem) {
    showIn(GetParam().panel);
    showFace(textFace);
    showToolTip("42 ms");

    EXPECT_EQ(
        signalsAfter([this] {
            GetParam().change(state_);
            item_->show(state_);
        }),
        GetParam().told);
}

INSTANTIATE_TEST_SUITE_P(
    NotifierStatusItemTest, ToldChange,
    testing::Values(
        Change{"SameFace", "xfce4-panel", [](auto& state) { state.face = textFace; }, {}},
        Change{"SameToolTip", "xfce4-panel", [](auto& state) { state.toolTip = "42 ms"; }, {}},
        Change{"IconAlone", "xfce4-panel", [](auto& state) { state.face = otherBars; }, {"NewIcon"}},
        Change{
            "TitleAtALabel",
            "gnome-shell",
            [](auto& state) { state.face = otherText; },
            {"XAyatanaNewLabel"}},
        Change{
            "FigureInASquare",
            "xfce4-panel",
            [](auto& state) { state.face = otherText; },
            {"NewIcon", "XAyatanaNewLabel"}},
        Change{"ToolTip", "xfce4-panel", [](auto& state) { state.toolTip = "43 ms"; }, {"NewToolTip"}},
        Change{
            "SpokenValue",
            "xfce4-panel",
            [](auto& state) { state.accessibilityValue = "Good"; },
            {"PropertiesChanged", "IconAccessibleDesc"}},
        Change{
            "ChosenInk",
            "lxqt-panel",
            [](auto& state) { state.ink = StatusItem::InkChoice::dark; },
            {"NewIcon"}},
        Change{"Form", "lxqt-panel", [](auto& state) { state.form = Form::wide; }, {"NewIcon"}}),
    test::caseName);

TEST_F(NotifierStatusItemTest, APanelThatWaitsForAnotherLabelIsToldOneOnce) {
    showIn("gnome-shell");
    showFace(textFace);
    Panel& panel = *panels_.front();
    std::vector<std::string> labels;
    const Subscription heard =
        panel.peer.link().addMatch("type='signal',member='XAyatanaNewLabel'", [&labels](BusMessage& signal) {
            labels.push_back(std::get<0>(signal.read<std::string, std::string>().value()));
        });
    ASSERT_TRUE(runUntilHeardBy(panel.peer));
    labels.clear();

    readMenu(panel);
    readMenu(panel);

    ASSERT_TRUE(runUntilHeardBy(panel.peer));
    EXPECT_THAT(labels, ElementsAre("", text("XAyatanaLabel")));
}

TEST_F(NotifierStatusItemTest, APanelWithoutLabelsIsToldNoneAgain) {
    showIn("xfce4-panel");
    showFace(textFace);
    Panel& panel = *panels_.front();

    EXPECT_THAT(signalsAfter([&panel, this] { readMenu(panel); }), IsEmpty());
}

TEST_F(NotifierStatusItemTest, AnEmptyLabelIsNotToldAgain) {
    showIn("gnome-shell");
    Panel& panel = *panels_.front();

    EXPECT_THAT(signalsAfter([&panel, this] { readMenu(panel); }), IsEmpty());
}

TEST_F(NotifierStatusItemTest, WhereThePanelsColorIsUnknownTheFallbackHolds) {
    showIn("some-panel");

    EXPECT_THAT(signalsAfter([this] { item_->setFallbackInk(Ink::light); }), ElementsAre("NewIcon"));

    const auto pixmaps = std::get<Pixmaps>(properties().at("IconPixmap"));
    EXPECT_EQ(std::get<2>(pixmaps.front())[1], 0xF4);
}

TEST_F(NotifierStatusItemTest, TheInkFollowsThePanelsTheme) {
    showIn("lxqt-panel");
    theme_.writeTheme(
        "lxqt/themes/Light/lxqt-panel.qss", "LXQtPanel #BackgroundWidget { background: #eee; }");

    theme_.writeUserSettings("lxqt/lxqt.conf", "[General]\ntheme=Light\n");

    EXPECT_TRUE(runUntil([this] {
        const auto pixmaps = std::get<Pixmaps>(properties().at("IconPixmap"));
        return std::get<2>(pixmaps.front())[1] == 0x24;
    }));
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
    showFace(textFace);
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

    EXPECT_FALSE(test::runOneTurn(loop_, 1.5));
}

} // namespace tarnwick
