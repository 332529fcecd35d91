// The panel that says what the program is.
#include "app/App/AboutPanel.h"

#include "tests/app/StatusMenuView/StandardMenu.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFontInfo>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AboutPanelTest : public testing::Test {
protected:
    [[nodiscard]] QString allText() const {
        QString text;
        for (const QLabel* label : panel.window()->findChildren<QLabel*>()) {
            text += label->text() + "\n";
        }
        return text;
    }

    void press(Qt::Key key) const {
        QApplication::processEvents();
        QTest::keyClick(panel.window(), key, Qt::ControlModifier);
    }

    test::StandardMenu menu;
    AboutPanel panel{"1.2.3", "~/history", menu.menu};
};

} // namespace

TEST_F(AboutPanelTest, ItTellsNameVersionCreditsAndLicense) {
    panel.show();

    EXPECT_TRUE(allText().contains("Tarnwick\nVersion 1.2.3\n"));
    EXPECT_TRUE(allText().contains("Keeps an eye on your internet connection from the menu bar."));
    EXPECT_TRUE(allText().contains("MIT License"));
}

TEST_F(AboutPanelTest, ItTellsWhatIsSentAndWhatIsKeptWhere) {
    panel.show();

    EXPECT_TRUE(allText().contains("sends pings to the host that you choose"));
    EXPECT_TRUE(allText().contains(
        "a change of the network, while something is wrong and shortly after, it also asks the routers"));
    EXPECT_TRUE(allText().contains("asks your name servers"));
    EXPECT_TRUE(allText().contains("one file that only you can read, ~/history,"));
    EXPECT_TRUE(allText().contains("clear it and switch it off"));
}

TEST_F(AboutPanelTest, ItsParagraphsAreShownWhole) {
    panel.show();
    QApplication::processEvents();

    for (const QLabel* label : panel.window()->findChildren<QLabel*>()) {
        EXPECT_LE(label->x() + label->width(), panel.window()->width()) << label->text().toStdString();
        if (label->wordWrap()) {
            EXPECT_GE(label->height(), label->heightForWidth(label->width())) << label->text().toStdString();
        }
    }
}

TEST_F(AboutPanelTest, NoLinkLeadsToWhereNothingIs) {
    panel.show();

    EXPECT_FALSE(allText().contains("http")) << allText().toStdString();
    EXPECT_FALSE(allText().contains("<a")) << allText().toStdString();
}

TEST_F(AboutPanelTest, ItShowsTheProgramsIcon) {
    panel.show();
    const QList<QLabel*> labels = panel.window()->findChildren<QLabel*>();

    ASSERT_FALSE(labels.isEmpty());
    EXPECT_GE(labels.front()->pixmap().width(), 96);
}

TEST_F(AboutPanelTest, ItsTextsFollowAFontThatIsSetInPixels) {
    const QFont usual = QApplication::font();
    QFont font = usual;
    font.setPixelSize(26);
    QApplication::setFont(font);

    panel.show();

    std::vector<int> heights;
    for (const QLabel* label : panel.window()->findChildren<QLabel*>()) {
        if (!label->text().isEmpty()) {
            heights.push_back(QFontInfo(label->font()).pixelSize());
        }
    }
    EXPECT_THAT(heights, ElementsAre(42, 26, 22, 22, 22, 22));
    QApplication::setFont(usual);
}

TEST_F(AboutPanelTest, ShownTwiceItIsOneWindow) {
    panel.show();
    const QDialog* const first = panel.window();
    panel.show();

    EXPECT_EQ(panel.window(), first);
    EXPECT_EQ(QApplication::topLevelWidgets().size(), 1);
}

TEST_F(AboutPanelTest, OnceClosedItCanBeShownAgain) {
    panel.show();
    panel.window()->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Close)->click();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(panel.window(), nullptr);

    panel.show();
    ASSERT_NE(panel.window(), nullptr);
    EXPECT_TRUE(panel.window()->isVisible());
}

TEST_F(AboutPanelTest, ControlWClosesIt) {
    panel.show();
    press(Qt::Key_W);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    EXPECT_EQ(panel.window(), nullptr);
    EXPECT_THAT(menu.chosen, IsEmpty());
}

TEST_F(AboutPanelTest, TheShortcutsOfTheProgramsMenuWorkInIt) {
    panel.show();
    press(Qt::Key_Comma);
    press(Qt::Key_Q);

    EXPECT_THAT(menu.chosen, ElementsAre(MenuItem::Id::settings, MenuItem::Id::quit));
}

} // namespace tarnwick
