// What the user should know, in the drop-down: read, copied, and given room only while it is there.
#include "app/NoticesView/NoticesView.h"
#include "app/NoticesView/NoticeButton.h"
#include "app/StatusMenuView/StatusMenuView.h"
#include "tests/app/StatusMenuView/DrawnView.h"
#include "tests/app/StatusMenuView/DropDownTest.h"

#include <QAccessible>
#include <QClipboard>

#include <gmock/gmock.h>

namespace tarnwick {

namespace {

using testing::ElementsAre;

const Notice withCommand{.kind = Notice::Kind::settingsMistake, .text = "Do it with:", .command = "it"};
const Notice withoutCommand{.kind = Notice::Kind::noPanel, .text = "No panel"};

class NoticesViewTest : public DropDownTest {
protected:
    NoticesViewTest() { QGuiApplication::clipboard()->setText("before"); }

    [[nodiscard]] static std::vector<std::string> childNames(QObject& object) {
        std::vector<std::string> names;
        const QAccessibleInterface* const interface = QAccessible::queryAccessibleInterface(&object);
        for (int index = 0; index < interface->childCount(); ++index) {
            names.push_back(interface->child(index)->text(QAccessible::Name).toStdString());
        }
        return names;
    }

    template<class View>
    [[nodiscard]] View* find() const {
        for (QWidget* child : dropDown.window()->findChildren<QWidget*>()) {
            if (auto* const found = dynamic_cast<View*>(child)) {
                return found;
            }
        }
        return nullptr;
    }

    template<class View>
    [[nodiscard]] View& part() const {
        View* const found = find<View>();
        if (found == nullptr) {
            throw std::logic_error("no such part");
        }
        return *found;
    }

    [[nodiscard]] static std::string clipboard() {
        return QGuiApplication::clipboard()->text().toStdString();
    }

    void pass() {
        loop.advance(1);
        QApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
};

} // namespace

TEST_F(NoticesViewTest, AssistiveTechnologySeesThemBelowTheHeader) {
    monitor.setNotice(withoutCommand);
    monitor.setNotice(withCommand);
    watchFor(20.5);
    open();

    EXPECT_THAT(
        childNames(part<StatusMenuView>()),
        ElementsAre(
            "Excellent, 1.1.1.1, 20 ms, 0% loss", "Notices", testing::StartsWith("Median"), "Statistics"));
    EXPECT_THAT(childNames(part<NoticesView>()), ElementsAre("Do it with: it", "Copy", "No panel"));
    EXPECT_EQ(part<NoticeButton>().accessibleDescription(), "it");
}

TEST_F(NoticesViewTest, TheWindowGivesThemRoomWhenTheyComeAndTakesItBack) {
    watchFor(20.5);
    open();
    const int before = dropDown.window()->height();

    monitor.setNotice(withCommand);
    pass();
    const int withNotice = dropDown.window()->height();
    EXPECT_EQ(withNotice - before, part<NoticesView>().height() + 12);
    EXPECT_EQ(part<StatusMenuView>().height(), part<StatusMenuView>().sizeHint().height());

    loop.advance(30);
    QApplication::processEvents();
    EXPECT_EQ(dropDown.window()->height(), withNotice);

    monitor.clearNotice(withCommand.kind);
    pass();
    EXPECT_EQ(dropDown.window()->height(), before);
    EXPECT_EQ(find<NoticesView>(), nullptr);
}

TEST_F(NoticesViewTest, ALongTextIsBrokenIntoLines) {
    Notice notice = withoutCommand;
    const NoticesView oneLine({notice}, {}, 292, nullptr);
    notice.text = "a text that is far too long to have room in one line of the drop-down, so it has several";
    const NoticesView blanks({notice}, {}, 292, nullptr);
    notice.text = std::string(200, 'w');
    const NoticesView word({notice}, {}, 292, nullptr);

    EXPECT_GT(blanks.sizeHint().height(), oneLine.sizeHint().height() + 10);
    EXPECT_GT(word.sizeHint().height(), oneLine.sizeHint().height() + 50);
}

TEST_F(NoticesViewTest, TextAndCommandAreDrawnOnAWarmGround) {
    NoticesView view({withCommand, withoutCommand}, {}, 292, nullptr);
    view.setPalette(test::paperPalette());
    view.resize(view.sizeHint());

    const QImage image = test::drawn(view);

    EXPECT_NE(image.pixelColor(146, 3), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(146, 3), image.pixelColor(146, image.height() - 4));
    const int half = image.height() / 4;
    EXPECT_TRUE(test::hasColor(image, QRect(10, 10, 200, half - 10), Qt::black));
    EXPECT_TRUE(test::hasColor(image, QRect(10, image.height() - 30, 200, 20), Qt::black));
}

TEST_F(NoticesViewTest, TheCommandCanBeRead) {
    const auto picture = [](const std::string& command) {
        NoticesView view(
            {{.kind = withCommand.kind, .text = "Do it:", .command = command}}, {}, 292, nullptr);
        view.setPalette(test::paperPalette());
        view.resize(view.sizeHint());
        return test::drawn(view);
    };

    EXPECT_TRUE(picture("one") == picture("one"));
    EXPECT_FALSE(picture("one") == picture("two"));
}

TEST_F(NoticesViewTest, TheButtonCopiesTheCommandAndSaysSo) {
    monitor.setNotice(withCommand);
    open();

    part<NoticeButton>().click();

    EXPECT_EQ(clipboard(), "it");
    EXPECT_EQ(part<NoticeButton>().text(), "Copied");
    EXPECT_TRUE(dropDown.isOpen());
}

TEST_F(NoticesViewTest, OnlyALackOfPermissionOffersToAllowPinging) {
    int asked = 0;
    const NoticeActions actions{.allowPinging = [&asked] { ++asked; }};
    const Notice mayNotPing{.kind = Notice::Kind::mayNotPing, .text = "Allow it with:", .command = "it"};
    const auto buttons = [](const NoticesView& view) { return view.findChildren<QPushButton*>(); };
    const NoticesView view({mayNotPing}, actions, 292, nullptr);

    ASSERT_EQ(buttons(view).size(), 2);
    EXPECT_EQ(buttons(view)[1]->text(), "Allow…");
    EXPECT_LT(buttons(view)[1]->geometry().right(), buttons(view)[0]->geometry().left());
    buttons(view)[1]->click();
    EXPECT_EQ(asked, 1);

    EXPECT_EQ(buttons(NoticesView({mayNotPing}, {}, 292, nullptr)).size(), 1);
    EXPECT_EQ(buttons(NoticesView({withCommand}, actions, 292, nullptr)).size(), 1);
}

TEST_F(NoticesViewTest, TabReachesTheButtonAndReturnPressesIt) {
    monitor.setNotice(withCommand);
    open();

    press(Qt::Key_Tab);
    ASSERT_TRUE(part<NoticeButton>().hasFocus());
    press(Qt::Key_Return);
    EXPECT_EQ(clipboard(), "it");

    press(Qt::Key_Tab);
    EXPECT_EQ(highlighted(), titles().front());
    press(Qt::Key_Backtab);
    EXPECT_TRUE(part<NoticeButton>().hasFocus());
    press(Qt::Key_Escape);
    EXPECT_FALSE(dropDown.isOpen());
}

TEST_F(NoticesViewTest, TheOfferOfAnExtensionIsAnsweredByTwoButtons) {
    std::vector<bool> answers;
    const NoticeActions actions{.answerOffer = [&answers](bool switchOn) { answers.push_back(switchOn); }};
    QWidget parent;
    NoticesView view({extensionNotice()}, actions, 300, &parent);
    view.resize(view.sizeHint());
    ASSERT_EQ(view.findChildren<QPushButton*>().size(), 2);

    for (QPushButton* const button : view.findChildren<QPushButton*>()) {
        EXPECT_TRUE(view.rect().contains(button->geometry()));
        button->click();
    }

    EXPECT_THAT(answers, ElementsAre(true, false));
}

TEST_F(NoticesViewTest, TheOfferOfAPlaceAmongTheApplicationsIsAnsweredByTwoButtons) {
    std::vector<bool> answers;
    const NoticeActions actions{.answerApplications = [&answers](bool adds) { answers.push_back(adds); }};
    QWidget parent;
    NoticesView view({applicationsNotice()}, actions, 300, &parent);
    view.resize(view.sizeHint());
    const auto buttons = view.findChildren<QPushButton*>();
    ASSERT_EQ(buttons.size(), 2);
    EXPECT_EQ(buttons.front()->text(), "Add");

    for (QPushButton* const button : buttons) {
        EXPECT_TRUE(view.rect().contains(button->geometry()));
        button->click();
    }

    EXPECT_THAT(answers, ElementsAre(true, false));
}

TEST_F(NoticesViewTest, ANewVersionIsStartedByAButton) {
    int restarts = 0;
    const NoticeActions actions{.restart = [&restarts] { ++restarts; }};
    QWidget parent;
    NoticesView view({newVersionNotice()}, actions, 300, &parent);
    view.resize(view.sizeHint());
    const auto* const button = view.findChild<QPushButton*>();
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(button->text(), "Restart");
    EXPECT_TRUE(view.rect().contains(button->geometry()));

    view.findChild<QPushButton*>()->click();

    EXPECT_EQ(restarts, 1);
}

TEST_F(NoticesViewTest, WhereNothingTakesTheAnswerTheOfferHasNoButtons) {
    QWidget parent;
    NoticesView view({extensionNotice()}, {}, 300, &parent);

    EXPECT_TRUE(view.findChildren<QPushButton*>().isEmpty());
}

} // namespace tarnwick
