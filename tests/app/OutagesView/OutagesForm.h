// The outages window over a history that tests write, in virtual time.
#pragma once

#include "app/App/OutagesWindow.h"
#include "app/HistoryChartView/HistoryChartView.h"
#include "app/OutagesView/DayStrip.h"
#include "app/OutagesView/OutageList.h"
#include "app/OutagesView/OutagesView.h"
#include "tests/app/StatusMenuView/StandardMenu.h"
#include "tests/core/History/SomeHistory.h"
#include "tests/simulation/VirtualRunLoop.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <stdexcept>
#include <string>
#include <vector>

namespace tarnwick::test {

/// Noon of Wednesday, 2026-01-07, in Central Europe. Watched for three days.
struct OutagesForm {
    static constexpr std::size_t today = OutagesPage::today;

    OutagesForm() {
        loop.setWallClock(at("2026-01-07 11:00"));
        reading.set({.host = "one.example"});
        history.until = at("2026-01-07 11:00");
        history.periods =
            goodPeriods({.from = at("2026-01-04 23:00"), .to = history.until}, PeriodLength::quarterHour);
    }

    OutagesForm(const OutagesForm&) = delete;
    OutagesForm& operator=(const OutagesForm&) = delete;

    /// An outage on Monday and a poor minute and an outage on Tuesday.
    void addOutages() {
        history.episodes = {
            outage("2026-01-05 10:00", "2026-01-05 10:10"), outage("2026-01-06 10:00", "2026-01-06 10:01"),
            outage("2026-01-06 12:00", "2026-01-06 12:05")};
        history.episodes[0].verdict = Verdict{
            .blame = Blame::provider, .likelihood = Likelihood::likely, .evidence = "Your router answers."};
        history.episodes[1].kind = Episode::Kind::degradation;
        history.episodes[2].verdict = Verdict{
            .blame = Blame::wifi, .likelihood = Likelihood::certain, .evidence = "The Wi-Fi signal is weak."};
    }

    void present() {
        window.present();
        settle();
    }

    void settle() {
        loop.runPending();
        QApplication::processEvents();
    }

    /// Sends keys to whatever has the keyboard.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QWidget* const focused = QApplication::focusWidget();
        QTest::keyClick(focused != nullptr ? focused : &window, key, modifiers);
        settle();
    }

    /// The only one of a class that the toolkit does not know by name.
    template<class Part>
    [[nodiscard]] Part& part() const {
        for (QWidget* const each : window.findChildren<QWidget*>()) {
            if (auto* const found = dynamic_cast<Part*>(each)) {
                return *found;
            }
        }
        throw std::logic_error("there is no such part");
    }

    [[nodiscard]] DayStrip& strip() const { return part<DayStrip>(); }

    [[nodiscard]] std::vector<QAbstractButton*> days() const {
        const auto buttons = strip().findChildren<QAbstractButton*>();
        return {buttons.begin(), buttons.end()};
    }

    [[nodiscard]] OutageList& list() const { return part<OutageList>(); }

    [[nodiscard]] HistoryChartView& chart() const { return part<HistoryChartView>(); }

    [[nodiscard]] QPushButton& button(const QString& text) const {
        for (auto* const each : window.findChildren<QPushButton*>()) {
            if (each->text().remove('&') == text) {
                return *each;
            }
        }
        throw std::logic_error("no button " + text.toStdString());
    }

    /// All texts that can be seen or are read aloud, one a line.
    [[nodiscard]] std::string texts() const {
        QString text;
        for (const QWidget* widget : window.findChildren<QWidget*>()) {
            const auto* const label = qobject_cast<const QLabel*>(widget);
            if (widget->isVisible()) {
                text += (label != nullptr ? label->text() : widget->accessibleName()) + "\n";
            }
        }
        return text.toStdString();
    }

    /// The rows of the list that are selected.
    [[nodiscard]] std::vector<int> selected() const {
        std::vector<int> rows;
        for (const QModelIndex& index : list().selectionModel()->selectedIndexes()) {
            rows.push_back(index.row());
        }
        return rows;
    }

    /// What assistive technology reads where the keyboard is.
    [[nodiscard]] static std::string focused() {
        QWidget* const widget = QApplication::focusWidget();
        QAccessibleInterface* const seen =
            widget == nullptr ? nullptr : QAccessible::queryAccessibleInterface(widget);
        return seen == nullptr ? "" : seen->text(QAccessible::Name).toStdString();
    }

    simulation::VirtualRunLoop loop;
    Observed<Reading> reading;
    Observed<bool> keepsHistory{true};
    History history;
    int reads = 0;
    StandardMenu menu;
    OutagesWindow window{
        {.loop = loop,
         .reading = reading,
         .keepsHistory = [this] { return keepsHistory.get(); },
         .read =
             [this](const Span& /*span*/) {
                 ++reads;
                 return history;
             },
         .version = "1.2",
         .offset = centralEurope},
        menu.menu};
};

} // namespace tarnwick::test
