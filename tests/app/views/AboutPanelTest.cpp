// The panel that says what the program is.
#include "app/App/AboutPanel.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>

#include <gtest/gtest.h>

namespace tarnwick {

namespace {

class AboutPanelTest : public testing::Test {
protected:
    [[nodiscard]] QString allText() const {
        QString text;
        for (const QLabel* label : panel.window()->findChildren<QLabel*>()) {
            text += label->text() + "\n";
        }
        return text;
    }

    AboutPanel panel{"1.2.3"};
};

} // namespace

TEST_F(AboutPanelTest, ItTellsNameVersionCreditsAndLicense) {
    panel.show();

    EXPECT_TRUE(allText().contains("Tarnwick\nVersion 1.2.3\n"));
    EXPECT_TRUE(allText().contains("Keeps an eye on your internet connection from the menu bar."));
    EXPECT_TRUE(allText().contains("MIT License"));
}

TEST_F(AboutPanelTest, ItShowsTheProgramsIcon) {
    panel.show();
    const QList<QLabel*> labels = panel.window()->findChildren<QLabel*>();

    ASSERT_FALSE(labels.isEmpty());
    EXPECT_GE(labels.front()->pixmap().width(), 96);
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

} // namespace tarnwick
