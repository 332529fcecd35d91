// The window that drops down from the status item: opening, closing, and what it shows.
#include "tests/app/StatusMenuView/DropDownTest.h"

#include "app/StatusMenuView/StatusMenuView.h"
#include "platform/qt/Appearance.h"
#include "tests/support/CaseName.h"

#include <QAccessible>
#include <QMouseEvent>
#include <QScreen>

#include <algorithm>
#include <gmock/gmock.h>

namespace tarnwick {

namespace {

using Id = MenuItem::Id;
using testing::ElementsAre;
using testing::IsEmpty;

struct Clicks {
    std::string name;
    bool isFocusLost;           ///< by an open window before the first click
    std::vector<double> pauses; ///< seconds before each click
    bool isOpen;                ///< after the last one

    friend void PrintTo(const Clicks& clicks, std::ostream* out) { *out << clicks.name; }
};

class DropDownClicks : public DropDownTest, public testing::WithParamInterface<Clicks> {};

} // namespace

TEST_F(DropDownTest, ItTellsTheMenuWhenItOpensAndWhenItHasClosed) {
    open();
    EXPECT_EQ(menu.opened, 1);
    EXPECT_EQ(menu.closed, 0);

    dropDown.close();
    EXPECT_FALSE(dropDown.isOpen());
    EXPECT_EQ(menu.opened, 1);
    EXPECT_EQ(menu.closed, 1);
}

TEST_F(DropDownTest, ClosingAClosedWindowTellsNoObserver) {
    dropDown.close();

    EXPECT_EQ(menu.closed, 0);
}

TEST_F(DropDownTest, OpeningItAgainKeepsTheSameWindow) {
    open();
    const DropDownWindow* const window = dropDown.window();
    dropDown.open(std::nullopt);

    EXPECT_EQ(dropDown.window(), window);
    EXPECT_EQ(menu.opened, 1);
}

TEST_P(DropDownClicks, OpenAndClose) {
    if (GetParam().isFocusLost) {
        open();
        QEvent event(QEvent::WindowDeactivate);
        QApplication::sendEvent(dropDown.window(), &event);
        ASSERT_FALSE(dropDown.isOpen());
    }
    for (const double pause : GetParam().pauses) {
        loop.advance(pause);
        dropDown.toggle(click);
    }

    EXPECT_EQ(dropDown.isOpen(), GetParam().isOpen);
}

INSTANTIATE_TEST_SUITE_P(
    DropDownTest, DropDownClicks,
    testing::Values(
        Clicks{"One", false, {0}, true}, Clicks{"Two", false, {0, 0.1}, false},
        Clicks{"Three", false, {0, 0.1, 0.1}, true},
        Clicks{"OneThatThePanelTellsTwice", false, {0, 0.001}, true},
        Clicks{"TwoOfWhichTheLaterIsToldTwice", false, {0, 0.1, 0}, false},
        Clicks{"TheOneThatTookTheFocus", true, {0.2}, false}, Clicks{"TheOneAfterThat", true, {0, 0.1}, true},
        Clicks{"OneLongAfterTheFocusWasLost", true, {0.35}, true}),
    test::caseName);

TEST_F(DropDownTest, LosingFocusCloses) {
    open();
    ASSERT_TRUE(dropDown.window()->isActiveWindow());
    QWidget other;
    other.show();
    other.activateWindow();
    QApplication::processEvents();

    EXPECT_FALSE(dropDown.isOpen());
}

TEST_F(DropDownTest, ItTurnsDarkWithTheDesktopWhileItIsOpen) {
    const auto ground = [this] {
        const DropDownWindow& window = *dropDown.window();
        return dropDown.window()->grab().toImage().pixelColor(window.width() / 2, window.height() - 20);
    };
    Appearance::prefer(false);
    open();
    EXPECT_GT(ground().lightness(), 200);

    Appearance::prefer(true);
    QApplication::processEvents();
    EXPECT_LT(ground().lightness(), 60);
    Appearance::prefer(std::nullopt);
}

TEST_F(DropDownTest, ItsWindowIsDescribedByTheSummaryAndFollowsIt) {
    watchFor(5.5);
    open();
    const auto description = [this] {
        return QAccessible::queryAccessibleInterface(dropDown.window())->text(QAccessible::Description);
    };
    EXPECT_EQ(description().toStdString(), monitor.reading().accessibilitySummary);
    EXPECT_TRUE(description().startsWith("Excellent")) << description().toStdString();

    fallSilent();
    ASSERT_TRUE(waitUntilDown());
    loop.runPending();
    EXPECT_EQ(description().toStdString(), monitor.reading().accessibilitySummary);
    EXPECT_TRUE(description().startsWith("Connection down, ")) << description().toStdString();
}

TEST_F(DropDownTest, TheDesktopMayCloseItsWindow) {
    open();
    dropDown.window()->close();

    EXPECT_FALSE(dropDown.isOpen());
    EXPECT_EQ(menu.closed, 1);
}

TEST_F(DropDownTest, ItsWindowDoesNotKeepTheProgramFromEnding) {
    open();
    QWidget* const window = dropDown.window();

    EXPECT_TRUE(window->close());
}

TEST_F(DropDownTest, ItsShadowGrowsFainterFromItsEdgeOutward) {
    open();
    const QImage image = dropDown.window()->grab().toImage();
    constexpr int margin = 14;
    for (int beyond = 0; beyond < 9; ++beyond) {
        const int y = image.height() - margin + beyond;
        EXPECT_GT(
            image.pixelColor(image.width() / 2, y).alpha(),
            image.pixelColor(image.width() / 2, y + 1).alpha())
            << beyond;
    }
}

TEST_F(DropDownTest, AClickIntoItsShadowCloses) {
    open();
    QMouseEvent event(
        QEvent::MouseButtonPress, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton, Qt::LeftButton,
        Qt::NoModifier);
    QApplication::sendEvent(dropDown.window(), &event);

    EXPECT_FALSE(dropDown.isOpen());
}

TEST_F(DropDownTest, ItsWindowIsInsideTheScreenAtTheClick) {
    open();
    const QRect frame = dropDown.window()->geometry();
    const QRect available = QGuiApplication::primaryScreen()->availableGeometry();

    // Its shadow may reach out.
    EXPECT_TRUE(available.contains(frame.adjusted(14, 14, -14, -14)));
    EXPECT_TRUE(frame.left() < click.x && frame.right() > click.x);
}

TEST_F(DropDownTest, WithoutAPlaceItOpensWhereItWasOpenedLast) {
    dropDown.toggle(click);
    const QRect frame = dropDown.window()->geometry();
    dropDown.close();
    dropDown.open(std::nullopt);

    EXPECT_EQ(dropDown.window()->geometry(), frame);
}

TEST_F(DropDownTest, ItIsNamedAndFrameless) {
    open();

    EXPECT_EQ(dropDown.window()->windowTitle(), "Tarnwick");
    EXPECT_TRUE(dropDown.window()->windowFlags().testFlag(Qt::FramelessWindowHint));
}

TEST_F(DropDownTest, VisibleItemsStandBelowTheStatusInTheMenusOrder) {
    open();

    EXPECT_THAT(
        titles(), ElementsAre(
                      "Reset Session Stats", "Pause for an Hour", "Outages…", "Check for Updates…",
                      "Settings…", "About Tarnwick", "Quit Tarnwick"));
    const auto& children = dropDown.window()->children();
    const auto status = std::ranges::find_if(
        children, [](QObject* child) { return dynamic_cast<StatusMenuView*>(child) != nullptr; });
    ASSERT_NE(status, children.end());
    EXPECT_GT(dropDown.window()->items().y(), static_cast<QWidget*>(*status)->geometry().bottom());
}

TEST_F(DropDownTest, AnItemComesAndGoesWhileItIsOpen) {
    open();
    const int height = dropDown.window()->height();
    menu.menu.setHidden(Id::changeHost, false);
    loop.runPending();
    EXPECT_EQ(titles().front(), "Change Host…");
    EXPECT_GT(dropDown.window()->height(), height);

    menu.menu.setHidden(Id::changeHost, true);
    loop.runPending();
    EXPECT_EQ(titles().front(), "Reset Session Stats");
    EXPECT_EQ(dropDown.window()->height(), height);
}

TEST_F(DropDownTest, AssistiveTechnologySeesStatusAndItems) {
    watchFor(20.5);
    open();
    const QAccessibleInterface* const window = QAccessible::queryAccessibleInterface(dropDown.window());
    ASSERT_EQ(window->childCount(), 2);
    EXPECT_EQ(window->text(QAccessible::Name), "Tarnwick");
    EXPECT_EQ(window->child(0)->childCount(), 3);

    const QAccessibleInterface* const items = window->child(1);
    std::vector<std::string> names;
    for (int index = 0; index < items->childCount(); ++index) {
        const QAccessibleInterface* const item = items->child(index);
        if (!item->state().invisible) {
            names.push_back(item->text(QAccessible::Name).toStdString());
            EXPECT_EQ(item->role(), QAccessible::Button);
        }
    }
    EXPECT_EQ(names, titles());
}

TEST_F(DropDownTest, OnceClosedNothingOfItIsLeft) {
    watchFor(20.5);
    const std::size_t timers = loop.timerCount();
    open();
    dropDown.close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    EXPECT_THAT(QApplication::topLevelWidgets(), IsEmpty());
    EXPECT_EQ(loop.timerCount(), timers);
}

TEST_F(DropDownTest, AChangeOnItsWayWhenItClosesIsIgnored) {
    watchFor(20.5);
    open();
    monitor.resetSessionStats();
    menu.menu.setHidden(Id::changeHost, false);
    dropDown.close();
    loop.advance(2);

    EXPECT_FALSE(dropDown.isOpen());
}

TEST_F(DropDownTest, ItFollowsTheColorsOfTheDesktop) {
    open();
    const QPoint inside(20, 20);
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(250, 250, 250));
    dropDown.window()->setPalette(palette);
    EXPECT_EQ(dropDown.window()->grab().toImage().pixelColor(inside), QColor(250, 250, 250));

    palette.setColor(QPalette::Window, QColor(40, 42, 48));
    dropDown.window()->setPalette(palette);
    EXPECT_EQ(dropDown.window()->grab().toImage().pixelColor(inside), QColor(40, 42, 48));
}

TEST_F(DropDownTest, WithoutAClickItOpensWhereTheItemIsFound) {
    DropDown::Found found;
    dropDown.findItem = [&found](DropDown::Found told) { found = std::move(told); };
    dropDown.openAtItem();
    EXPECT_FALSE(dropDown.isOpen());
    EXPECT_TRUE(dropDown.looksForItem());

    found(click);

    ASSERT_TRUE(dropDown.isOpen());
    EXPECT_FALSE(dropDown.looksForItem());
    const QRect atItem = dropDown.window()->frameGeometry();
    dropDown.close();
    dropDown.open(click);
    EXPECT_EQ(atItem, dropDown.window()->frameGeometry());
}

TEST_F(DropDownTest, AnItemThatIsNotFoundDoesNotKeepItClosed) {
    DropDown::Found found;
    dropDown.findItem = [&found](DropDown::Found told) { found = std::move(told); };
    dropDown.openAtItem();

    found(std::nullopt);

    EXPECT_TRUE(dropDown.isOpen());
}

TEST_F(DropDownTest, AClickOpensItWhereTheItemIsFoundOrElseWhereItWas) {
    DropDown::Found found;
    dropDown.findItem = [&found](DropDown::Found told) { found = std::move(told); };
    dropDown.open(click);
    const QRect atClick = dropDown.window()->frameGeometry();
    dropDown.close();

    dropDown.toggle(ScreenPoint{.x = 2 * click.x, .y = 2 * click.y});
    ASSERT_TRUE(dropDown.looksForItem());
    found(click);
    EXPECT_EQ(dropDown.window()->frameGeometry(), atClick);

    dropDown.close();
    loop.advance(1);
    dropDown.toggle(click);
    found(std::nullopt);
    EXPECT_EQ(dropDown.window()->frameGeometry(), atClick);
}

TEST_F(DropDownTest, AClickWhileTheItemIsLookedForEndsThat) {
    DropDown::Found found;
    dropDown.findItem = [&found](DropDown::Found told) { found = std::move(told); };
    dropDown.openAtItem();

    dropDown.toggle(click);
    found(click);

    EXPECT_FALSE(dropDown.isOpen());
}

TEST_F(DropDownTest, WhereNothingTellsOfTheItemItOpensAtOnce) {
    dropDown.openAtItem();

    EXPECT_TRUE(dropDown.isOpen());
}

} // namespace tarnwick
