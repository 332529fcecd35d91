// The menu of hosts in the host's field.
#include "app/SettingsView/PresetButton.h"

#include "tests/app/SettingsView/SettingsFormTest.h"

#include <QMenu>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PresetButtonTest : public test::SettingsFormTest {
protected:
    PresetButtonTest() {
        model.networkServers = [this] {
            ++reads_;
            return NetworkServers{.routers = {"192.168.1.1"}, .nameServers = {"10.0.0.2"}};
        };
    }

    [[nodiscard]] QPushButton& button() { return *host().findChild<QPushButton*>(); }

    /// The open menu; null while there is none.
    [[nodiscard]] static QMenu* menu() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }

    /// The texts of the open menu, with "--" for a separator. None while it is closed.
    [[nodiscard]] static std::vector<std::string> entries() {
        std::vector<std::string> texts;
        for (const QAction* action : menu() != nullptr ? menu()->actions() : QList<QAction*>()) {
            texts.push_back(action->isSeparator() ? "--" : action->text().toStdString());
        }
        return texts;
    }

    /// Sends a key to the open menu.
    void pressInMenu(Qt::Key key) {
        QTest::keyClick(menu(), key);
        settle();
    }

    int reads_ = 0;
};

} // namespace

TEST_F(PresetButtonTest, ItsMenuListsTheNetworksMachinesAndPublicHosts) {
    present();
    QTest::mouseClick(&button(), Qt::LeftButton);

    EXPECT_THAT(
        entries(), ElementsAre(
                       "Router — 192.168.1.1", "Name Server — 10.0.0.2", "--", "Cloudflare — 1.1.1.1",
                       "Google — 8.8.8.8", "Quad9 — 9.9.9.9"));
}

TEST_F(PresetButtonTest, WithoutMachinesOfTheNetworkNoLineSeparatesThem) {
    model.networkServers = nullptr;
    present();
    QTest::mouseClick(&button(), Qt::LeftButton);

    EXPECT_THAT(entries(), ElementsAre("Cloudflare — 1.1.1.1", "Google — 8.8.8.8", "Quad9 — 9.9.9.9"));
}

TEST_F(PresetButtonTest, TheNetworkIsReadEachTimeThatTheMenuOpensAndNeverElse) {
    present();
    watchFor(30);
    EXPECT_EQ(reads_, 0);

    for (int opened = 1; opened <= 2; ++opened) {
        press(Qt::Key_Down);
        EXPECT_EQ(reads_, opened);
        EXPECT_EQ(entries().size(), 6U);
        pressInMenu(Qt::Key_Escape);
        EXPECT_THAT(entries(), IsEmpty());
    }
}

TEST_F(PresetButtonTest, AChosenHostIsPingedAtOnceAsIfEnterHadBeenPressed) {
    present();
    press(Qt::Key_Down);
    pressInMenu(Qt::Key_Down);
    pressInMenu(Qt::Key_Return);

    EXPECT_EQ(prefs.hostname(), "192.168.1.1");
    EXPECT_EQ(host().text(), "192.168.1.1");
    EXPECT_EQ(focused(), "Host to Ping");
}

TEST_F(PresetButtonTest, AChosenHostReplacesADraftThatWasNeverPinged) {
    resolve("two.exam", "192.0.2.2");
    watchFor(10);
    present();
    typeInto(host(), "two.exam");
    QTest::mouseClick(&button(), Qt::LeftButton);
    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
    pressInMenu(Qt::Key_Up); // to the last one
    pressInMenu(Qt::Key_Return);

    EXPECT_EQ(prefs.hostname(), "9.9.9.9");
    EXPECT_EQ(host().text(), "9.9.9.9");
}

TEST_F(PresetButtonTest, ClosedWithoutAChoiceItLeavesTheDraft) {
    present();
    typeInto(host(), "two.exam");
    press(Qt::Key_Down);
    pressInMenu(Qt::Key_Escape);

    EXPECT_EQ(host().text(), "two.exam");
    EXPECT_EQ(prefs.hostname(), "1.1.1.1");
    EXPECT_TRUE(window.isVisible());
}

TEST_F(PresetButtonTest, ItIsReachedByKeys) {
    present();
    press(Qt::Key_Tab);
    ASSERT_EQ(QApplication::focusWidget(), &button());
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Down, Qt::Key_F4}) {
        press(key);
        EXPECT_EQ(entries().size(), 6U) << key;
        pressInMenu(Qt::Key_Escape);
    }
    interval().setFocus();
    press(Qt::Key_O, Qt::AltModifier);
    EXPECT_EQ(entries().size(), 6U);
    pressInMenu(Qt::Key_Escape);
    EXPECT_EQ(focused(), "Ping Every");
}

TEST_F(PresetButtonTest, AssistiveTechnologyFindsAButtonWithAMenu) {
    present();
    QAccessibleInterface& found = accessible(button());

    EXPECT_EQ(found.role(), QAccessible::ButtonMenu);
    EXPECT_EQ(found.text(QAccessible::Name), "Choose Host");
    EXPECT_TRUE(found.state().hasPopup);
    EXPECT_FALSE(found.state().expanded);
    found.actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(entries().size(), 6U);
    EXPECT_TRUE(found.state().expanded);
    ASSERT_EQ(found.childCount(), 1);
    EXPECT_EQ(found.child(0)->object(), menu());
    EXPECT_EQ(found.child(0)->child(0)->text(QAccessible::Name), "Router — 192.168.1.1");
    pressInMenu(Qt::Key_Escape);
    EXPECT_FALSE(found.state().expanded);
}

TEST_F(PresetButtonTest, ThePresentHostIsMarked) {
    monitor.setHostname("8.8.8.8");
    present();
    press(Qt::Key_Down);

    std::vector<std::string> marked;
    for (const QAction* action : menu()->actions()) {
        if (action->isChecked()) {
            marked.push_back(action->text().toStdString());
        }
    }
    EXPECT_THAT(marked, ElementsAre("Google — 8.8.8.8"));
}

TEST_F(PresetButtonTest, TheMenuIsBelowTheFieldAndAsWide) {
    for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        window.setLayoutDirection(direction);
        present();
        press(Qt::Key_Down);
        const QRect field(host().mapToGlobal(QPoint()), host().size());
        ASSERT_NE(menu(), nullptr);

        EXPECT_GE(menu()->width(), field.width());
        EXPECT_GE(menu()->y(), field.bottom());
        if (direction == Qt::LeftToRight) {
            EXPECT_EQ(menu()->x(), field.left());
            EXPECT_GT(place(button()).left(), place(host()).center().x());
        } else {
            EXPECT_EQ(menu()->geometry().right(), field.right());
            EXPECT_LT(place(button()).right(), place(host()).center().x());
        }
        pressInMenu(Qt::Key_Escape);
    }
}

TEST_F(PresetButtonTest, ALongHostIsNotWrittenUnderTheArrow) {
    useUsualFont();
    monitor.setHostname("a-host-whose-name-is-longer-than-the-field.example");
    present();
    host().end(false);
    const QRect cursor = host().inputMethodQuery(Qt::ImCursorRectangle).toRect();

    EXPECT_LE(cursor.right(), button().geometry().left());
}

} // namespace tarnwick
