// The question before something that can't be undone.
#include "app/App/ConfirmDialog.h"

#include "app/StatusItemController/StatusItemController.h"
#include "tests/app/StatusMenuView/StandardMenu.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ConfirmDialogTest : public testing::Test {
protected:
    ~ConfirmDialogTest() override {
        dialog.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void ask() {
        const Question question{
            .title = "Reset Everything",
            .text = "Really?",
            .note = "Another one keeps its own.",
            .confirm = "Reset",
            .cancel = "Keep"};
        dialog->ask(question, [this](bool answer) { answers.push_back(answer); });
        QApplication::processEvents();
    }

    [[nodiscard]] QAbstractButton* button(const QString& text) const {
        for (QAbstractButton* each : dialog->window()->buttons()) {
            if (each->text().remove('&') == text) {
                return each;
            }
        }
        return nullptr;
    }

    void press(int key) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(dialog->window(), &event);
    }

    test::StandardMenu menu;
    std::unique_ptr<ConfirmDialog> dialog = std::make_unique<ConfirmDialog>(menu.menu);
    std::vector<bool> answers;
};

} // namespace

TEST_F(ConfirmDialogTest, ItAsksWithoutHoldingUpTheProgram) {
    ask();

    ASSERT_NE(dialog->window(), nullptr);
    EXPECT_EQ(dialog->window()->text(), "Really?");
    EXPECT_FALSE(dialog->window()->isModal());
    EXPECT_THAT(answers, IsEmpty());
}

TEST_F(ConfirmDialogTest, ItsTitleNamesWhatIsAskedAbout) {
    ask();

    EXPECT_EQ(dialog->window()->windowTitle(), "Reset Everything");
}

TEST_F(ConfirmDialogTest, ItShowsTheNoteBelowTheQuestion) {
    ask();

    EXPECT_EQ(dialog->window()->informativeText(), "Another one keeps its own.");
}

TEST_F(ConfirmDialogTest, TheActionsButtonAnswersYes) {
    ask();
    ASSERT_NE(button("Reset"), nullptr);
    button("Reset")->click();

    EXPECT_THAT(answers, ElementsAre(true));
    EXPECT_EQ(dialog->window(), nullptr);
}

TEST_F(ConfirmDialogTest, CancelAnswersNo) {
    ask();
    ASSERT_NE(button("Keep"), nullptr);
    button("Keep")->click();

    EXPECT_THAT(answers, ElementsAre(false));
}

TEST_F(ConfirmDialogTest, EscapeAnswersNo) {
    ask();
    press(Qt::Key_Escape);

    EXPECT_THAT(answers, ElementsAre(false));
}

TEST_F(ConfirmDialogTest, AClosedWindowAnswersNo) {
    ask();
    dialog->window()->close();

    EXPECT_THAT(answers, ElementsAre(false));
}

TEST_F(ConfirmDialogTest, EnterTakesTheSafeWay) {
    ask();
    press(Qt::Key_Return);

    EXPECT_THAT(answers, ElementsAre(false));
}

TEST_F(ConfirmDialogTest, ControlWAnswersNo) {
    ask();
    QTest::keyClick(button("Keep"), Qt::Key_W, Qt::ControlModifier);

    EXPECT_THAT(answers, ElementsAre(false));
}

TEST_F(ConfirmDialogTest, TheShortcutsOfTheProgramsMenuWorkInIt) {
    ask();
    QTest::keyClick(button("Keep"), Qt::Key_Comma, Qt::ControlModifier);
    QTest::keyClick(button("Reset"), Qt::Key_Q, Qt::ControlModifier);

    EXPECT_THAT(menu.chosen, ElementsAre(MenuItem::Id::settings, MenuItem::Id::quit));
    EXPECT_THAT(answers, IsEmpty());
}

TEST_F(ConfirmDialogTest, ANewQuestionAnswersTheOpenOneWithNo) {
    ask();
    ask();

    EXPECT_THAT(answers, ElementsAre(false));
    ASSERT_NE(dialog->window(), nullptr);
    button("Reset")->click();
    EXPECT_THAT(answers, ElementsAre(false, true));
}

TEST_F(ConfirmDialogTest, WhenItGoesTheQuestionStaysUnanswered) {
    ask();
    dialog.reset();

    EXPECT_THAT(answers, IsEmpty());
    EXPECT_THAT(QApplication::topLevelWidgets(), IsEmpty());
}

} // namespace tarnwick
