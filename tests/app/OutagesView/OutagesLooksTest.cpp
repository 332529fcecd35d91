// What the outages window draws: rows of its list, the calendar's marker and months, figures, remarks.
#include "app/OutagesView/DayFigures.h"
#include "app/OutagesView/StatusLine.h"
#include "tests/app/OutagesView/OutagesForm.h"
#include "tests/app/StatusMenuView/DrawnView.h"

#include <QFontInfo>
#include <QFontMetrics>
#include <QImage>
#include <QScrollBar>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace tarnwick {

namespace {

using testing::HasSubstr;
using testing::SizeIs;

class OutagesLooksTest : public testing::Test, protected test::OutagesForm {
protected:
    OutagesLooksTest() {
        addOutages();
        QPalette palette = test::paperPalette();
        palette.setColor(QPalette::Highlight, accent);
        palette.setColor(QPalette::HighlightedText, onAccent);
        palette.setColor(QPalette::Base, Qt::white);
        palette.setColor(QPalette::Text, Qt::black);
        window.setPalette(palette);
    }

    [[nodiscard]] QImage drawnList() { return test::drawn(*list().viewport()); }

    [[nodiscard]] QRect rowAt(int row) const { return list().visualRect(list().model()->index(row, 0)); }

    static bool isInked(const QImage& image, const QRect& place) {
        for (int y = place.top(); y <= place.bottom(); ++y) {
            for (int x = place.left(); x <= place.right(); ++x) {
                if (image.pixelColor(x, y).lightness() < 220) {
                    return true;
                }
            }
        }
        return false;
    }

    /// Where texts begin that are at least `distance` apart.
    static std::vector<int> textsIn(const QImage& image, const QRect& place, int distance) {
        std::vector<int> lefts;
        int end = place.left() - distance;
        for (int x = place.left(); x <= place.right(); ++x) {
            if (isInked(image, QRect(x, place.top(), 1, place.height()))) {
                if (x - end >= distance) {
                    lefts.push_back(x);
                }
                end = x;
            }
        }
        return lefts;
    }

    /// How many pixels of a column have a color.
    static int heightOf(const QImage& image, int x, const QRect& rows, const QColor& color) {
        int height = 0;
        for (int y = rows.top(); y <= rows.bottom(); ++y) {
            height += test::hasColor(image, QRect(x, y, 1, 1), color) ? 1 : 0;
        }
        return height;
    }

    /// The part of the form that reads so.
    [[nodiscard]] QRect placeOf(const QString& spoken) const {
        for (const QWidget* const each : window.findChildren<QWidget*>()) {
            if (each->accessibleName().startsWith(spoken + ":")) {
                return each->geometry();
            }
        }
        return {};
    }

    const QColor accent{0, 0, 200};
    const QColor onAccent{250, 250, 0};
    static constexpr int mark = 12; ///< its middle, from the left edge of a row
};

} // namespace

TEST_F(OutagesLooksTest, AnOutagesMarkIsHigherThanThatOfAPoorTime) {
    present();
    const QImage image = drawnList();
    const LatencyPalette colors(window.palette());
    const int down = heightOf(image, mark, rowAt(0), colors.bad());
    const int poor = heightOf(image, mark, rowAt(1), colors.warn());

    EXPECT_GT(down, rowAt(0).height() * 6 / 10);
    EXPECT_LT(down, rowAt(0).height());
    EXPECT_NEAR(poor, down / 2, 2);
    EXPECT_FALSE(isInked(image, QRect(mark, rowAt(1).top(), 1, rowAt(1).height() / 2 - 2)));
}

TEST_F(OutagesLooksTest, PartsOfRowsStandBelowEachOther) {
    present();
    const QImage image = drawnList();
    std::vector<std::vector<int>> parts;
    for (int row = 0; row < 3; ++row) {
        const QRect place = rowAt(row).adjusted(mark + 6, 0, 0, -rowAt(row).height() / 2);
        parts.push_back(textsIn(image, place, 14));
    }

    ASSERT_THAT(parts[0], SizeIs(3));
    for (std::size_t part = 0; part < 3; ++part) {
        EXPECT_NEAR(parts[1].at(part), parts[0][part], 2) << part;
        EXPECT_NEAR(parts[2].at(part), parts[0][part], 2) << part;
    }
}

TEST_F(OutagesLooksTest, EvidenceStandsBelowAndEndsWithinItsRow) {
    history.episodes[0].verdict->evidence = std::string(500, 'm');
    present();
    const QImage image = drawnList();
    const QRect poor = rowAt(1);
    const QRect wifi = rowAt(0);
    const QRect longest = rowAt(2);
    const auto lower = [](const QRect& row) { return row.adjusted(20, row.height() / 2 + 2, 0, 0); };

    EXPECT_TRUE(isInked(image, lower(wifi)));
    EXPECT_FALSE(isInked(image, lower(poor))); // nothing is known
    EXPECT_TRUE(isInked(image, lower(longest).adjusted(lower(longest).width() - 60, 0, -20, 0)));
    EXPECT_FALSE(isInked(image, lower(longest).adjusted(lower(longest).width() - 8, 0, 0, 0)));
}

TEST_F(OutagesLooksTest, ASelectedRowStandsOnTheAccent) {
    present();
    list().setCurrentIndex(list().model()->index(1, 0));
    const QImage image = drawnList();
    const QPoint side(rowAt(1).right() - 6, rowAt(1).center().y());

    EXPECT_EQ(image.pixelColor(side), accent);
    EXPECT_TRUE(test::hasColor(image, rowAt(1), onAccent));
    EXPECT_EQ(image.pixelColor(side.x(), rowAt(0).center().y()), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(side.x(), rowAt(2).center().y()), QColor(Qt::white));
    EXPECT_FALSE(test::hasColor(image, rowAt(0), onAccent));
}

TEST_F(OutagesLooksTest, TheRowWithTheKeyboardHasALineAroundIt) {
    present();
    list().setFocus();
    list().selectionModel()->setCurrentIndex(list().model()->index(1, 0), QItemSelectionModel::NoUpdate);
    const QImage image = drawnList();
    const int x = rowAt(1).center().x();

    EXPECT_TRUE(test::hasColor(image, QRect(x, rowAt(1).top(), 1, 3), accent));
    EXPECT_FALSE(test::hasColor(image, QRect(x, rowAt(1).center().y(), 1, 1), accent));
    EXPECT_FALSE(test::hasColor(image, QRect(x, rowAt(2).bottom() - 2, 1, 3), accent));
}

TEST_F(OutagesLooksTest, WithoutOutagesTheListIsNotBare) {
    history.episodes.clear();
    present();
    const QImage image = drawnList();

    EXPECT_TRUE(isInked(image, QRect(image.width() / 2 - 40, image.height() / 2 - 8, 80, 16)));
}

TEST_F(OutagesLooksTest, TheScrollBarIsAHandleThatFollowsThePointer) {
    for (int count = 0; count < 30; ++count) {
        const HistoryTime start = test::at("2026-01-02 00:30") + std::chrono::hours(count);
        history.episodes.insert(
            history.episodes.begin() + count, {.start = start, .end = start + std::chrono::minutes(2)});
    }
    present();
    QScrollBar& bar = *list().verticalScrollBar();
    ASSERT_GT(bar.maximum(), 0);
    const auto isInkedAt = [&bar](int y) {
        return isInked(test::drawn(bar), QRect(bar.width() / 2 - 1, y, 2, 2));
    };
    EXPECT_TRUE(isInkedAt(6));
    EXPECT_FALSE(isInkedAt(bar.height() - 6));

    const QPoint middle = bar.rect().center();
    const int grabbed = 10;
    QTest::mousePress(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(middle.x(), grabbed));
    QTest::mouseMove(&bar, QPoint(middle.x(), bar.height() + 100));
    QTest::mouseRelease(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(middle.x(), bar.height() + 100));
    EXPECT_EQ(bar.value(), bar.maximum());
    EXPECT_FALSE(isInkedAt(6));
    EXPECT_TRUE(isInkedAt(bar.height() - 6));

    QTest::mouseClick(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(middle.x(), 2));
    EXPECT_EQ(bar.value(), bar.maximum() - bar.pageStep());
}

TEST_F(OutagesLooksTest, TheColumnsOfFiguresStayWhereTheyAreFromDayToDay) {
    present();
    const auto lefts = [this] {
        return std::vector{placeOf("Asleep").left(), placeOf("Worst hour").right(), placeOf("Jitter").left()};
    };
    const std::vector<int> before = lefts();
    press(Qt::Key_Left); // to one with an outage
    ASSERT_THAT(texts(), HasSubstr("\nWorst hour: 13:00, down for 5 min\n"));

    EXPECT_EQ(lefts(), before);
}

TEST_F(OutagesLooksTest, TheChosenDayIsMarked) {
    present();
    const auto above = [this](std::size_t day) {
        const QRect place = days().at(day)->geometry();
        return test::drawn(strip()).pixelColor(place.center().x(), place.top() + 8);
    };

    EXPECT_NE(above(today), QColor(Qt::white));
    EXPECT_EQ(above(today - 3), QColor(Qt::white));
    press(Qt::Key_Left);
    press(Qt::Key_Left);
    press(Qt::Key_Left);
    EXPECT_EQ(above(today), QColor(Qt::white));
    EXPECT_NE(above(today - 3), QColor(Qt::white));
}

TEST_F(OutagesLooksTest, OnlyADayWithTheKeyboardHasALineAroundIt) {
    present();
    const QRect place = days().at(today)->geometry();
    const QRect edge(place.center().x(), place.top(), 1, 4);
    EXPECT_TRUE(test::hasColor(test::drawn(strip()), edge, accent));

    list().setFocus();
    EXPECT_FALSE(test::hasColor(test::drawn(strip()), edge, accent));
}

TEST_F(OutagesLooksTest, MonthsAreNamedBelowTheirFirstDays) {
    present();
    const QImage image = test::drawn(strip());
    const int columns = days().front()->geometry().bottom() + 1;
    const QRect names(0, columns, image.width(), image.height() - columns);
    const auto firstOf = [this](int daysAgo) {
        return days().at(today - static_cast<std::size_t>(daysAgo))->x();
    };

    const std::vector<int> found = textsIn(image, names, 40);
    ASSERT_THAT(found, SizeIs(3));
    EXPECT_NEAR(found[0], firstOf(67), 2); // November
    EXPECT_NEAR(found[1], firstOf(37), 2);
    EXPECT_NEAR(found[2], firstOf(6), 2);
}

TEST_F(OutagesLooksTest, AMonthThatHasNoRoomIsNotNamed) {
    loop.setWallClock(test::at("2026-01-01 11:00"));
    present();
    const QImage image = test::drawn(strip());
    const int columns = days().front()->geometry().bottom() + 1;

    // The first of January is the last day.
    EXPECT_THAT(textsIn(image, QRect(0, columns, image.width(), image.height() - columns), 40), SizeIs(2));
}

TEST_F(OutagesLooksTest, FiguresStandInThreeColumns) {
    present();
    const std::vector<std::vector<QString>> columns{
        {"Availability", "Down", "Watched", "Not watched"},
        {"Asleep", "Paused", "Packet loss", "Worst hour"},
        {"Median latency", "95th percentile", "Slowest answer", "Jitter"}};
    int end = -1;
    for (const auto& names : columns) {
        const QRect first = placeOf(names[0]);
        EXPECT_GT(first.left(), end);
        int bottom = -1;
        for (const QString& name : names) {
            const QRect place = placeOf(name);
            EXPECT_EQ(place.left(), first.left()) << name.toStdString();
            EXPECT_GT(place.top(), bottom) << name.toStdString();
            bottom = place.bottom();
        }
        end = first.right();
    }
}

TEST_F(OutagesLooksTest, AFiguresNameStandsAtTheLeftAndItsValueAtTheRight) {
    present();
    for (QWidget* const each : part<DayFigures>().findChildren<QWidget*>()) {
        const QImage image = test::drawn(*each);
        const std::vector<int> texts = textsIn(image, image.rect(), 10);
        ASSERT_GE(texts.size(), 2U) << each->accessibleName().toStdString();
        EXPECT_LE(texts.front(), 3);
        EXPECT_TRUE(isInked(image, QRect(image.width() - 4, 0, 4, image.height())));
    }
}

TEST_F(OutagesLooksTest, AFiguresValueIsDarkerThanItsName) {
    present();
    const QImage image = test::drawn(*part<DayFigures>().findChildren<QWidget*>().front());
    const auto darkest = [&image](int left, int right) {
        int lightness = 255;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = left; x < right; ++x) {
                lightness = std::min(lightness, image.pixelColor(x, y).lightness());
            }
        }
        return lightness;
    };

    EXPECT_LT(darkest(image.width() / 2, image.width()) + 20, darkest(0, image.width() / 2));
}

TEST_F(OutagesLooksTest, APoorTimeIsNotCalledDown) {
    history.episodes.erase(history.episodes.begin());
    history.episodes[0].end = history.episodes[0].start + std::chrono::minutes(5);
    present();
    const QImage image = drawnList();
    const auto words = [&](int row) {
        const QRect upper = rowAt(row).adjusted(mark + 6, 0, 0, -rowAt(row).height() / 2);
        const std::vector<int> parts = textsIn(image, upper, 14);
        return image.copy(QRect(parts.at(1), upper.top(), 60, upper.height()));
    };

    // Both lasted for five minutes.
    EXPECT_NE(words(0), words(1));
}

TEST_F(OutagesLooksTest, ALargerFontMakesHeadingsAndRowsOfFiguresLarger) {
    present();
    const auto heading = [this] {
        for (const QLabel* const label : window.findChildren<QLabel*>()) {
            if (label->text() == "All Outages") {
                return label->fontInfo().pixelSize();
            }
        }
        return 0;
    };
    const auto betweenRows = [this] { return placeOf("Down").top() - placeOf("Availability").bottom(); };
    const int before = heading();
    const int between = betweenRows();
    QFont font = window.font();
    font.setPixelSize(QFontInfo(font).pixelSize() * 2);
    window.setFont(font);
    settle();

    EXPECT_EQ(heading(), 2 * before);
    EXPECT_GT(betweenRows(), between);
}

TEST_F(OutagesLooksTest, ARemarkHasRoomForTwoLines) {
    present();
    auto& status = part<StatusLine>();
    const int line = QFontMetrics(status.font()).height();
    EXPECT_GT(status.height(), line * 3 / 2);
    status.resize(200, status.height());
    status.showText(QStringLiteral("A sentence that is a little longer than one such line."), false);
    const QImage image = test::drawn(status);

    EXPECT_TRUE(isInked(image, QRect(0, 0, image.width(), image.height() / 2)));
    EXPECT_TRUE(isInked(image, QRect(0, image.height() / 2 + 2, image.width(), image.height() / 2 - 2)));
    EXPECT_EQ(status.toolTip(), "A sentence that is a little longer than one such line.");
}

TEST_F(OutagesLooksTest, AShortRemarkStandsInTheMiddle) {
    present();
    auto& status = part<StatusLine>();
    status.showText(QStringLiteral("MMMM"), false);
    const QImage image = test::drawn(status);
    const int quarter = image.height() / 4;

    EXPECT_TRUE(isInked(image, QRect(0, quarter, image.width(), 2 * quarter)));
    EXPECT_FALSE(isInked(image, QRect(0, 0, image.width(), quarter)));
    EXPECT_FALSE(isInked(image, QRect(0, 3 * quarter, image.width(), image.height() - 3 * quarter)));
}

TEST_F(OutagesLooksTest, AFailureHasTheColorOfWhatIsBad) {
    present();
    auto& status = part<StatusLine>();
    const QColor bad = LatencyPalette(window.palette()).bad();
    const auto isBad = [&] { return test::hasColor(test::drawn(status), status.rect(), bad); };
    EXPECT_FALSE(isBad());
    status.showText(QStringLiteral("MMMMMMMM"), true);
    EXPECT_TRUE(isBad());
    status.showText(QStringLiteral("MMMMMMMM"), false);
    EXPECT_FALSE(isBad());
}

} // namespace tarnwick
