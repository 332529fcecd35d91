// What the outages window shows, and what its controls do.
#include "tests/app/OutagesView/OutagesForm.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <QAction>
#include <QClipboard>
#include <QFileDialog>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class OutagesViewTest : public testing::Test, protected test::OutagesForm {
protected:
    /// From the calendar, past the chart.
    void tabToList() {
        press(Qt::Key_Tab);
        press(Qt::Key_Tab);
    }

    /// Clicks "Export…" and answers its question with a path.
    void exportTo(const QString& path) {
        button("Export…").click();
        settle();
        auto* const dialog = window.findChild<QFileDialog*>();
        ASSERT_NE(dialog, nullptr);
        Q_EMIT dialog->fileSelected(path);
        dialog->close();
        settle();
    }

    test::TemporaryFolder folder;
};

} // namespace

TEST_F(OutagesViewTest, ItBeginsWithToday) {
    addOutages();
    present();

    EXPECT_EQ(focused(), "Wednesday, 2026-01-07: 100% available");
    EXPECT_THAT(
        texts(), AllOf(
                     HasSubstr("\nWednesday, 2026-01-07\n"), HasSubstr("\nAvailability: 100%\n"),
                     HasSubstr("\nWatched: 12 h\n"), HasSubstr("\nMedian latency: 20.0 ms\n"),
                     HasSubstr("Connection to one.example, known since 2026-01-05 00:00.")));
    EXPECT_THAT(selected(), IsEmpty());
}

TEST_F(OutagesViewTest, ADayLeadsToItsOutage) {
    addOutages();
    present();
    press(Qt::Key_Left);

    EXPECT_EQ(focused(), "Tuesday, 2026-01-06: 99.652% available, 1 outage, down for 5 min");
    EXPECT_THAT(texts(), AllOf(HasSubstr("\nTuesday, 2026-01-06\n"), HasSubstr("\nDown: 5 min\n")));
    EXPECT_THAT(selected(), ElementsAre(0));

    press(Qt::Key_Right);
    EXPECT_THAT(selected(), IsEmpty());
}

TEST_F(OutagesViewTest, AnOutageLeadsToItsDay) {
    addOutages();
    present();
    tabToList();
    ASSERT_EQ(focused(), "Outages");
    press(Qt::Key_End);

    EXPECT_THAT(selected(), ElementsAre(2));
    EXPECT_THAT(texts(), HasSubstr("\nMonday, 2026-01-05\n"));
    EXPECT_TRUE(days().at(today - 2)->isChecked());
    EXPECT_TRUE(list().hasFocus());
}

TEST_F(OutagesViewTest, TabLeadsThroughItAndAround) {
    addOutages();
    present();
    std::vector<std::string> order;
    for (int presses = 0; presses < 6; ++presses) {
        order.push_back(focused());
        press(Qt::Key_Tab);
        if (presses == 1) {
            press(Qt::Key_Down); // selects something to copy
        }
    }

    EXPECT_THAT(
        order, ElementsAre(
                   HasSubstr("Wednesday, 2026-01-07"), HasSubstr("By half hours"), "Outages", "Copy",
                   "Export…", HasSubstr("Tuesday, 2026-01-06")));
}

TEST_F(OutagesViewTest, ItIsReadAloudFromTopToBottom) {
    addOutages();
    present();
    const std::string all = texts();
    std::size_t before = 0;
    for (const char* const text :
         {"Days\n", "Wednesday, 2026-01-07\n", "Figures\n", "By half hours", "All Outages\n", "\nOutages\n",
          "Connection to"}) {
        const std::size_t at = all.find(text);
        ASSERT_NE(at, std::string::npos) << text;
        EXPECT_GE(at, before) << text;
        before = at;
    }
}

TEST_F(OutagesViewTest, OutagesAreCopiedAsLines) {
    addOutages();
    present();
    EXPECT_FALSE(button("Copy").isEnabled());
    tabToList();
    press(Qt::Key_End);
    press(Qt::Key_C, Qt::ControlModifier);
    const std::string monday =
        "2026-01-05 11:00:00, down for 10 min. Provider (likely): Your router answers.";
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), monday);

    press(Qt::Key_A, Qt::ControlModifier);
    button("Copy").click();
    EXPECT_EQ(
        QGuiApplication::clipboard()->text().toStdString(),
        "2026-01-06 13:00:00, down for 5 min. Wi-Fi: The Wi-Fi signal is weak.\n"
        "2026-01-06 11:00:00, poor for 1 min. Not clear.\n"
            + monday);
}

TEST_F(OutagesViewTest, CopiedLinesStandInTheOrderOfTheList) {
    addOutages();
    present();
    tabToList();
    list().setCurrentIndex(list().model()->index(2, 0));
    list().selectionModel()->select(list().model()->index(0, 0), QItemSelectionModel::Select);
    press(Qt::Key_C, Qt::ControlModifier);

    EXPECT_EQ(
        QGuiApplication::clipboard()->text().toStdString(),
        "2026-01-06 13:00:00, down for 5 min. Wi-Fi: The Wi-Fi signal is weak.\n"
        "2026-01-05 11:00:00, down for 10 min. Provider (likely): Your router answers.");
}

TEST_F(OutagesViewTest, TheListHasAContextMenuToCopy) {
    present();

    EXPECT_EQ(list().contextMenuPolicy(), Qt::ActionsContextMenu);
    ASSERT_EQ(list().actions().size(), 1);
    EXPECT_EQ(list().actions().front()->text(), "Copy");
}

TEST_F(OutagesViewTest, ARowThatIsOnlyPassedLeadsToNoDay) {
    addOutages();
    present();
    tabToList();
    press(Qt::Key_Down);
    ASSERT_THAT(selected(), ElementsAre(1));
    press(Qt::Key_Down, Qt::ControlModifier);

    EXPECT_EQ(list().currentIndex().row(), 2);
    EXPECT_THAT(selected(), ElementsAre(1));
    EXPECT_THAT(texts(), HasSubstr("\nTuesday, 2026-01-06\n"));
}

TEST_F(OutagesViewTest, ARowTellsAllOfItsTextInAToolTip) {
    addOutages();
    present();

    EXPECT_EQ(
        list().model()->index(1, 0).data(Qt::ToolTipRole).toString(),
        "2026-01-06 11:00:00, poor for 1 min. Not clear.");
}

TEST_F(OutagesViewTest, OpenedAgainItHasForgottenWhatWasSelectedAndWritten) {
    addOutages();
    present();
    list().setCurrentIndex(list().model()->index(2, 0));
    exportTo(QString::fromStdString((folder.path() / "a.txt").string()));
    ASSERT_THAT(texts(), HasSubstr("The report is in"));
    window.close();
    settle();
    present();

    EXPECT_THAT(selected(), IsEmpty());
    EXPECT_THAT(texts(), Not(HasSubstr("The report is in")));
}

TEST_F(OutagesViewTest, ReturnPressesItsButtons) {
    addOutages();
    present();
    tabToList();
    press(Qt::Key_Down);
    press(Qt::Key_Tab);
    ASSERT_EQ(focused(), "Copy");
    press(Qt::Key_Return);

    EXPECT_EQ(
        QGuiApplication::clipboard()->text().toStdString(),
        "2026-01-06 11:00:00, poor for 1 min. Not clear.");
}

TEST_F(OutagesViewTest, ANewOutageAppearsAndTheSelectedOneStaysSelected) {
    addOutages();
    present();
    tabToList();
    press(Qt::Key_Down);
    ASSERT_THAT(selected(), ElementsAre(1));
    history.episodes.push_back({.start = test::at("2026-01-07 10:59")});
    reading.set({.status = ConnectionWatchdog::Status::down, .host = "one.example"});
    settle();

    EXPECT_EQ(list().model()->rowCount(), 4);
    EXPECT_THAT(selected(), ElementsAre(2));
    EXPECT_THAT(texts(), HasSubstr("\nTuesday, 2026-01-06\n"));
}

TEST_F(OutagesViewTest, ARowThatGrowsKeepsItsPlace) {
    addOutages();
    history.episodes.push_back({.start = test::at("2026-01-07 10:59")});
    present();
    const QModelIndex first = list().model()->index(0, 0);
    EXPECT_EQ(first.data().toString(), "2026-01-07 11:59:00, down for 1 min so far. Not clear.");
    list().setCurrentIndex(first);
    history.until += std::chrono::minutes(1);
    loop.advance(61);

    EXPECT_EQ(
        list().model()->index(0, 0).data().toString(),
        "2026-01-07 11:59:00, down for 2 min so far. Not clear.");
    EXPECT_THAT(selected(), ElementsAre(0));
}

TEST_F(OutagesViewTest, WithoutOutagesTheListSaysSo) {
    present();

    QAccessibleInterface* const seen = QAccessible::queryAccessibleInterface(&list());
    EXPECT_EQ(seen->text(QAccessible::Description), "No outage is known in these 90 days.");
    addOutages();
    loop.advance(61);
    EXPECT_EQ(seen->text(QAccessible::Description), "");
}

TEST_F(OutagesViewTest, AnEmptyHistorySaysWhy) {
    history = {};
    present();
    EXPECT_EQ(focused(), "Wednesday, 2026-01-07: not watched");
    EXPECT_THAT(texts(), HasSubstr("Nothing is known of one.example yet."));

    keepsHistory.set(false);
    settle();
    EXPECT_THAT(texts(), HasSubstr("No history is kept: that is switched off in the settings."));
}

TEST_F(OutagesViewTest, ClosedItReadsNothing) {
    present();
    window.close();
    settle();
    loop.advance(600);
    EXPECT_EQ(reads, 1);
    EXPECT_FALSE(window.model().isOpen());

    addOutages();
    present();
    EXPECT_EQ(reads, 2);
    EXPECT_EQ(list().model()->rowCount(), 3);
}

TEST_F(OutagesViewTest, HiddenByTheDesktopItStaysOpen) {
    present();
    QHideEvent hiding;
    QSpontaneKeyEvent::setSpontaneous(&hiding);
    qApp->notify(&window.view(), &hiding);

    EXPECT_TRUE(window.model().isOpen());
}

TEST_F(OutagesViewTest, TheReportIsWrittenInTheFormatOfItsName) {
    addOutages();
    present();
    const auto text = folder.path() / "a.txt";
    const auto table = folder.path() / "a.csv";
    exportTo(QString::fromStdString(text.string()));
    exportTo(QString::fromStdString(table.string()));

    EXPECT_EQ(test::contentOf(text), window.model().exported(ExportFormat::text));
    EXPECT_EQ(test::contentOf(table), window.model().exported(ExportFormat::csv));
    EXPECT_THAT(texts(), HasSubstr("The report is in " + table.string() + "."));
}

TEST_F(OutagesViewTest, TheFileIsNamedAfterTheDay) {
    present();
    button("Export…").click();
    settle();
    auto* const dialog = window.findChild<QFileDialog*>();
    ASSERT_NE(dialog, nullptr);

    EXPECT_EQ(dialog->acceptMode(), QFileDialog::AcceptSave);
    ASSERT_EQ(dialog->selectedFiles().size(), 1);
    EXPECT_TRUE(dialog->selectedFiles().front().endsWith("/tarnwick-2026-01-07.html"));
    EXPECT_EQ(
        dialog->nameFilters(),
        (QStringList{
            "Page to print or to send (*.html)", "Text (*.txt)", "Outages for spreadsheets (*.csv)"}));
    EXPECT_EQ(dialog->defaultSuffix(), "html");
    Q_EMIT dialog->filterSelected(dialog->nameFilters().at(2));
    EXPECT_EQ(dialog->defaultSuffix(), "csv");
    dialog->close();
}

TEST_F(OutagesViewTest, AReportThatCannotBeWrittenIsTold) {
    present();
    const std::string path = (folder.path() / "none/a.txt").string();
    exportTo(QString::fromStdString(path));
    EXPECT_THAT(
        texts(), HasSubstr("The report could not be written to " + path + ": No such file or directory"));

    exportTo(QString::fromStdString((folder.path() / "a.txt").string()));
    EXPECT_THAT(texts(), Not(HasSubstr("could not be written")));
}

} // namespace tarnwick
