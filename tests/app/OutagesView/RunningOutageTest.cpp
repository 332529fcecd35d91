// An outage that begins and ends while the outages window is open.
#include "tests/app/OutagesView/OutagesForm.h"

#include <QScrollBar>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Status = ConnectionWatchdog::Status;
using std::chrono::minutes;
using std::chrono::seconds;

class RunningOutageTest : public testing::Test, protected test::OutagesForm {
protected:
    /// Of an hour each, on Monday and Tuesday: more than the list has room for.
    void addManyOutages() {
        for (int count = 0; count < 30; ++count) {
            const HistoryTime start = test::at("2026-01-05 00:30") + std::chrono::hours(count);
            history.episodes.push_back({.start = start, .end = start + minutes(2)});
        }
    }

    /// Half a minute ago.
    void beginOutage() {
        history.episodes.push_back({.start = history.until - seconds(30)});
        reading.set({.status = Status::down, .host = "one.example"});
        settle();
    }

    void watchOn(double time) {
        history.until += seconds(static_cast<int>(time));
        loop.advance(time);
        settle();
    }

    void endOutage() {
        history.episodes.back().end = history.until;
        reading.set({.status = Status::up, .host = "one.example"});
        settle();
    }

    [[nodiscard]] QModelIndex row(int number) const { return list().model()->index(number, 0); }

    [[nodiscard]] std::string textOf(int number) const { return row(number).data().toString().toStdString(); }

    /// Below the upper edge of what is seen of the list.
    [[nodiscard]] int placeOf(int number) const { return list().visualRect(row(number)).top(); }
};

} // namespace

TEST_F(RunningOutageTest, ItComesToTheTopOfTheListAndLastsUntilItEnds) {
    addManyOutages();
    present();
    ASSERT_EQ(list().model()->rowCount(), 30);
    beginOutage();

    ASSERT_EQ(list().model()->rowCount(), 31);
    EXPECT_EQ(textOf(0), "2026-01-07 11:59:30, down for 30 s so far. Not clear.");
    EXPECT_EQ(placeOf(0), 0);

    watchOn(61);
    EXPECT_EQ(textOf(0), "2026-01-07 11:59:30, down for 1 min 31 s so far. Not clear.");

    endOutage();
    ASSERT_EQ(list().model()->rowCount(), 31);
    EXPECT_EQ(textOf(0), "2026-01-07 11:59:30, down for 1 min 31 s. Not clear.");
}

TEST_F(RunningOutageTest, OnlyItsRowIsDrawnAnewWhileItLasts) {
    addManyOutages();
    present();
    beginOutage();
    std::vector<int> drawn;
    QObject::connect(
        list().model(), &QAbstractItemModel::dataChanged, &list(),
        [&drawn](const QModelIndex& first, const QModelIndex& last) {
            for (int number = first.row(); number <= last.row(); ++number) {
                drawn.push_back(number);
            }
        });
    watchOn(61);

    EXPECT_THAT(drawn, testing::AllOf(testing::Not(IsEmpty()), testing::Each(0)));
}

TEST_F(RunningOutageTest, ADayLeadsToItsOutageFarDownInTheListToo) {
    addManyOutages();
    present();
    press(Qt::Key_Left);
    press(Qt::Key_Left);

    ASSERT_THAT(selected(), testing::SizeIs(1));
    EXPECT_TRUE(list().viewport()->rect().contains(list().visualRect(row(selected().front()))));
}

TEST_F(RunningOutageTest, TheFiguresOfTheDayChangeWithIt) {
    present();
    EXPECT_THAT(texts(), HasSubstr("\nDown: 0 s\n"));
    const QString before = chart().accessibleName();
    beginOutage();

    EXPECT_THAT(texts(), HasSubstr("\nDown: 30 s\n"));
    EXPECT_THAT(texts(), HasSubstr("\nWednesday, 2026-01-07: 99.930% available, 1 outage, down for 30 s\n"));
    EXPECT_NE(chart().accessibleName(), before);

    watchOn(61);
    EXPECT_THAT(texts(), HasSubstr("\nDown: 1 min 31 s\n"));
    endOutage();
    watchOn(61);
    EXPECT_THAT(texts(), HasSubstr("\nDown: 1 min 31 s\n"));
}

TEST_F(RunningOutageTest, WhatIsSelectedStaysSoAndWhereItIs) {
    addManyOutages();
    present();
    list().setCurrentIndex(row(20));
    list().selectionModel()->select(row(22), QItemSelectionModel::Select);
    const int place = placeOf(20);
    ASSERT_GT(list().verticalScrollBar()->value(), 0);
    beginOutage();

    EXPECT_THAT(selected(), testing::UnorderedElementsAre(21, 23));
    EXPECT_EQ(list().currentIndex().row(), 21);
    EXPECT_EQ(placeOf(21), place);

    watchOn(61);
    endOutage();
    EXPECT_EQ(list().currentIndex().row(), 21);
    EXPECT_EQ(placeOf(21), place);
}

TEST_F(RunningOutageTest, WhatIsSeenStaysWhereItIsWithoutASelectionToo) {
    addManyOutages();
    present();
    list().verticalScrollBar()->setValue(333);
    const int place = placeOf(10);
    beginOutage();

    EXPECT_EQ(placeOf(11), place);
    EXPECT_THAT(selected(), IsEmpty());
}

TEST_F(RunningOutageTest, TheDayAndTheKeyboardStayWhereTheyAre) {
    addManyOutages();
    present();
    press(Qt::Key_Left);
    ASSERT_THAT(focused(), HasSubstr("Tuesday, 2026-01-06"));
    const std::vector<int> before = selected();
    ASSERT_THAT(before, ElementsAre(0));
    beginOutage();

    EXPECT_THAT(focused(), HasSubstr("Tuesday, 2026-01-06"));
    EXPECT_EQ(window.model().chosenDay(), today - 1);
    EXPECT_THAT(selected(), ElementsAre(1));
    endOutage();
    EXPECT_THAT(focused(), HasSubstr("Tuesday, 2026-01-06"));
    EXPECT_THAT(texts(), HasSubstr("\nTuesday, 2026-01-06\n"));
}

TEST_F(RunningOutageTest, AHistoryThatIsClearedLeavesNothingToCopy) {
    addManyOutages();
    present();
    press(Qt::Key_Left);
    ASSERT_TRUE(button("Copy").isEnabled());
    history = {.until = history.until};
    watchOn(61);

    EXPECT_EQ(list().model()->rowCount(), 0);
    EXPECT_FALSE(button("Copy").isEnabled());
    EXPECT_THAT(texts(), Not(HasSubstr("1 outage")));
}

/// Also in the order of those that began at the same time.
TEST_F(RunningOutageTest, TheListFollowsWhateverTheHistoryHas) {
    addManyOutages();
    present();
    const auto shown = [this] {
        std::vector<std::string> all;
        for (int number = 0; number < list().model()->rowCount(); ++number) {
            all.push_back(textOf(number));
        }
        return all;
    };
    const auto expected = [this] {
        std::vector<std::string> all;
        for (const OutagesRow& each : window.model().page().rows) {
            all.push_back(each.text());
        }
        return all;
    };
    list().setCurrentIndex(row(3));
    history.episodes.erase(history.episodes.begin() + 5, history.episodes.begin() + 9);
    history.episodes.erase(history.episodes.begin());
    history.episodes.pop_back();
    watchOn(61);
    EXPECT_EQ(shown(), expected());
    EXPECT_THAT(selected(), ElementsAre(2));

    Episode poor = history.episodes[10];
    poor.kind = Episode::Kind::degradation;
    history.episodes.insert(history.episodes.begin() + 10, poor);
    history.episodes.insert(
        history.episodes.begin(),
        {.start = test::at("2026-01-04 23:30"), .end = test::at("2026-01-04 23:31")});
    watchOn(61);
    EXPECT_EQ(shown(), expected());

    std::swap(history.episodes[11], history.episodes[12]);
    watchOn(61);
    EXPECT_EQ(shown(), expected());
    EXPECT_THAT(selected(), ElementsAre(2));
}

} // namespace tarnwick
