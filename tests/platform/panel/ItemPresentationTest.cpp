// What each kind of panel is told of the status item.
#include "platform/panel/ItemPresentation.h"

#include "tests/platform/panel/FakePainter.h"

#include <gtest/gtest.h>

#include <string>

namespace tarnwick {

namespace {

using Form = StatusItem::Form;
using Icon = StatusFace::Icon;

constexpr const char* figureSpace = "\u2007";

class ItemPresentationTest : public testing::Test {
protected:
    [[nodiscard]] ItemPresentation shownBy(const PanelHost& host) const {
        return present(state_, host, Ink::light, hasIconTheme_, painter_);
    }

    [[nodiscard]] ItemPresentation shownBy(const char* process) const { return shownBy(panelHost(process)); }

    void showText() {
        state_.face = {
            .activeBars = 4,
            .title = "42 ms",
            .figure = "42",
            .widestTitle = "888 ms",
            .textSlot = 42,
        };
    }

    ItemState state_;
    bool hasIconTheme_ = true;
    FakePainter painter_;
};

} // namespace

TEST_F(ItemPresentationTest, ThePanelsOwnFormIsTakenWhereNoneIsSet) {
    EXPECT_EQ(shownBy("gnome-shell").form, Form::label);
    EXPECT_EQ(shownBy("waybar").form, Form::wide);
    EXPECT_EQ(shownBy("xfce4-panel").form, Form::square);
}

TEST_F(ItemPresentationTest, ASetFormComesBeforeThePanelsOwn) {
    state_.form = Form::wide;

    EXPECT_EQ(shownBy("gnome-shell").form, Form::wide);
}

TEST_F(ItemPresentationTest, AWideImageAndALabelThatIsDrawnHaveRoomForText) {
    EXPECT_TRUE(shownBy("gnome-shell").showsText);
    EXPECT_TRUE(shownBy("waybar").showsText);
    EXPECT_FALSE(shownBy("xfce4-panel").showsText);

    state_.form = Form::label;
    EXPECT_FALSE(shownBy("xfce4-panel").showsText);
    EXPECT_TRUE(shownBy("some-panel").showsText);
}

TEST_F(ItemPresentationTest, BarsAloneGoByNameWhereThePanelRecolorsThem) {
    state_.face.activeBars = 3;

    EXPECT_EQ(shownBy("xfce4-panel").iconName, "tarnwick-bars-3-symbolic");
    EXPECT_EQ(shownBy("lxqt-panel").iconName, "");
}

TEST_F(ItemPresentationTest, BarsInAnInkOfTheUsersChoiceGoAsAnImage) {
    state_.ink = StatusItem::InkChoice::dark;

    EXPECT_EQ(shownBy("xfce4-panel").iconName, "");
}

TEST_F(ItemPresentationTest, TheFailedTriangleGoesByNameWhereThePanelRecolorsIt) {
    state_.face = {.icon = Icon::failed, .title = "Failed", .textSlot = 42};

    EXPECT_EQ(shownBy("xfce4-panel").iconName, "tarnwick-failed-symbolic");
}

TEST_F(ItemPresentationTest, WithoutAnIconThemeNothingGoesByName) {
    hasIconTheme_ = false;

    EXPECT_EQ(shownBy("xfce4-panel").iconName, "");
}

TEST_F(ItemPresentationTest, AFigureInTheImageTakesTheNameAway) {
    showText();

    EXPECT_EQ(shownBy("xfce4-panel").iconName, "");
}

TEST_F(ItemPresentationTest, ATitleThatSaysThatThereIsNoFigureYetTakesTheNameAway) {
    state_.face = {.title = "…", .textSlot = 42};

    EXPECT_EQ(shownBy("xfce4-panel").iconName, "");
}

TEST_F(ItemPresentationTest, ATitleInAWideImageTakesTheNameAwayAlsoBesideTheTriangle) {
    state_.form = Form::wide;
    state_.face = {.icon = Icon::failed, .title = "Failed", .textSlot = 42};

    EXPECT_EQ(shownBy("xfce4-panel").iconName, "");
}

TEST_F(ItemPresentationTest, TextWithoutAnIconHasNoName) {
    showText();
    state_.face.icon = Icon::none;
    state_.face.activeBars = 0;

    EXPECT_EQ(shownBy("gnome-shell").iconName, "");
}

TEST_F(ItemPresentationTest, AtALabelTheIconKeepsItsNameBesideTheTitle) {
    showText();

    const ItemPresentation shown = shownBy("gnome-shell");

    EXPECT_EQ(shown.iconName, "tarnwick-bars-4-symbolic");
    EXPECT_TRUE(shown.label.starts_with("42 ms"));
}

TEST_F(ItemPresentationTest, ALabelIsPaddedToItsReservedWidthWhereThePanelIgnoresTheGuide) {
    showText();

    const ItemPresentation shown = shownBy("gnome-shell");

    EXPECT_EQ(shown.label, std::string("42 ms") + figureSpace);
    EXPECT_DOUBLE_EQ(painter_.textWidth(shown.label), state_.face.textSlot);
}

TEST_F(ItemPresentationTest, ALabelAsWideAsItsSlotIsNotPadded) {
    showText();
    state_.face.textSlot = 35;

    EXPECT_EQ(shownBy("gnome-shell").label, "42 ms");
}

TEST_F(ItemPresentationTest, OtherPanelsGetThePlainTitleAndItsGuide) {
    showText();

    const ItemPresentation shown = shownBy("xfce4-panel");

    EXPECT_EQ(shown.label, "42 ms");
    EXPECT_EQ(shown.labelGuide, "888 ms");
}

TEST_F(ItemPresentationTest, APanelThatDrawsLabelsGetsNoneBesideTextInTheImage) {
    showText();
    state_.form = Form::square;

    EXPECT_EQ(shownBy("gnome-shell").label, "");
}

TEST_F(ItemPresentationTest, WithoutATitleThereIsNoLabel) {
    state_.face.widestTitle = "888 ms";

    const ItemPresentation shown = shownBy("gnome-shell");

    EXPECT_EQ(shown.label, "");
    EXPECT_EQ(shown.labelGuide, "");
}

TEST_F(ItemPresentationTest, AToolTipIsHeadedByTheProgramsName) {
    state_.toolTip = "example.org\n42 ms";

    const ItemPresentation shown = shownBy("xfce4-panel");

    EXPECT_EQ(shown.toolTipTitle, "Tarnwick");
    EXPECT_EQ(shown.toolTipText, "example.org\n42 ms");
}

TEST_F(ItemPresentationTest, AToolTipIsItsTitleWhereThePanelShowsNothingElse) {
    state_.toolTip = "example.org\n42 ms";

    const ItemPresentation shown = shownBy("lxqt-panel");

    EXPECT_EQ(shown.toolTipTitle, "example.org\n42 ms");
    EXPECT_EQ(shown.toolTipText, "");
}

TEST_F(ItemPresentationTest, ATextThatLooksLikeMarkupIsEscaped) {
    state_.toolTip = "No address for <b>&co\nTimeout";

    for (const char* process : {"xfce4-panel", "waybar", "some-panel"}) {
        EXPECT_EQ(shownBy(process).toolTipText, "No address for &lt;b&gt;&amp;co\nTimeout") << process;
    }
}

TEST_F(ItemPresentationTest, APanelThatGuessesIsToldThatItIsMarkup) {
    state_.toolTip = "No address for a&b\nTimeout";

    EXPECT_EQ(shownBy("plasmashell").toolTipText, "<span>No address for a&amp;b<br>Timeout</span>");
    EXPECT_EQ(shownBy("lxqt-panel").toolTipTitle, "<span>No address for a&amp;b<br>Timeout</span>");
}

TEST_F(ItemPresentationTest, APanelThatGuessesGetsAPlainTextAsItIs) {
    state_.toolTip = "example.org\n42 ms";

    EXPECT_EQ(shownBy("plasmashell").toolTipText, "example.org\n42 ms");
}

TEST_F(ItemPresentationTest, AssistiveTechnologySaysTheNameAndThenTheValue) {
    EXPECT_EQ(shownBy("xfce4-panel").spoken, "Tarnwick");

    state_.accessibilityValue = "Excellent, 42 ms";

    EXPECT_EQ(shownBy("xfce4-panel").spoken, "Tarnwick: Excellent, 42 ms");
}

TEST_F(ItemPresentationTest, AtALabelAnotherTitleIsTheSameIcon) {
    showText();
    const ItemPresentation before = shownBy("gnome-shell");
    state_.face.title = "43 ms";
    state_.face.figure = "43";

    EXPECT_FALSE(shownBy("gnome-shell").hasOtherIcon(before));
}

TEST_F(ItemPresentationTest, InASquareAnotherLossTextIsTheSameIcon) {
    showText();
    const ItemPresentation before = shownBy("xfce4-panel");
    state_.face.title = "42 ms 3%";
    state_.face.textSlot = 63;

    EXPECT_FALSE(shownBy("xfce4-panel").hasOtherIcon(before));
}

TEST_F(ItemPresentationTest, InASquareAnotherFigureIsAnotherIcon) {
    showText();
    const ItemPresentation before = shownBy("xfce4-panel");
    state_.face.figure = "43";

    EXPECT_TRUE(shownBy("xfce4-panel").hasOtherIcon(before));
}

TEST_F(ItemPresentationTest, InAWideImageAnotherReservedWidthIsAnotherIcon) {
    showText();
    const ItemPresentation before = shownBy("waybar");
    state_.face.textSlot = 50;

    EXPECT_TRUE(shownBy("waybar").hasOtherIcon(before));
}

TEST_F(ItemPresentationTest, AnIconThatGoesByNameIsTheSameInAnyInk) {
    const PanelHost& host = panelHost("xfce4-panel");

    const ItemPresentation dark = present(state_, host, Ink::dark, true, painter_);

    EXPECT_FALSE(dark.hasOtherIcon(present(state_, host, Ink::light, true, painter_)));
}

TEST_F(ItemPresentationTest, AnIconThatGoesAsAnImageIsAnotherInAnotherInk) {
    const PanelHost& host = panelHost("lxqt-panel");

    const ItemPresentation dark = present(state_, host, Ink::dark, true, painter_);

    EXPECT_TRUE(dark.hasOtherIcon(present(state_, host, Ink::light, true, painter_)));
}

} // namespace tarnwick
