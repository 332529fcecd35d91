// The window that drops down from the status item, with keys pressed in it.
#pragma once

#include "app/StatusMenuView/DropDown.h"
#include "app/StatusMenuView/DropDownWindow.h"
#include "app/StatusMenuView/MenuItemsView.h"
#include "app/StatusMenuView/MenuRow.h"
#include "tests/app/StatusMenuView/StandardMenu.h"
#include "tests/app/WatchedMonitor.h"

#include <QApplication>
#include <QKeyEvent>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarnwick {

class DropDownTest : public testing::Test, protected WatchedMonitor {
public:
    /// `past` for the charts of longer spans.
    explicit DropDownTest(const PastSource& past = {})
        : dropDown(monitor.observedReading(), menu.menu, loop, {}, past) {}

    DropDownTest(const DropDownTest&) = delete;
    DropDownTest& operator=(const DropDownTest&) = delete;

    ~DropDownTest() override {
        dropDown.close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

protected:
    static constexpr ScreenPoint click{400, 4};

    void open() {
        dropDown.open(click);
        QApplication::processEvents();
    }

    void press(QKeyCombination keys) { send(QEvent::KeyPress, keys); }

    void release(Qt::Key key) { send(QEvent::KeyRelease, key); }

    void send(QEvent::Type type, QKeyCombination keys) {
        ASSERT_TRUE(dropDown.isOpen());
        QWidget* const focused = dropDown.window()->focusWidget();
        QWidget* const target = focused != nullptr ? focused : dropDown.window();
        QKeyEvent event(type, keys.key(), keys.keyboardModifiers());
        QApplication::sendEvent(target, &event);
    }

    [[nodiscard]] std::vector<MenuRow*> rows() const { return dropDown.window()->items().visibleRows(); }

    [[nodiscard]] std::vector<std::string> titles() const {
        std::vector<std::string> texts;
        for (const MenuRow* row : rows()) {
            texts.push_back(row->item().title);
        }
        return texts;
    }

    [[nodiscard]] std::string highlighted() const {
        for (const MenuRow* row : rows()) {
            if (row->hasFocus()) {
                return row->item().title;
            }
        }
        return "";
    }

    test::StandardMenu menu;
    DropDown dropDown;
};

} // namespace tarnwick
