// The menu as text, beside a status item that is shown.
#pragma once

#include "app/StatusItemController/PanelMenuText.h"
#include "tests/app/StatusItemController/WatchedStatusItem.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace tarnwick {

class PanelMenuTextTest : public testing::Test, protected WatchedStatusItem {
protected:
    void showMenu() {
        show();
        panelMenu = std::make_unique<PanelMenuText>(
            loop, monitor.observedReading(), *menu,
            PanelMenuText::Actions{
                .openDropDown = [this] { ++dropDownsOpened; },
                .copyCommand = [this](const std::string& command) { copied.push_back(command); },
                .allowPinging = [this] { ++permissionsAsked; }});
        panelMenu->onChange = [this] { ++changes; };
    }

    [[nodiscard]] const PanelMenuRow& row(const std::string& label) {
        rows = panelMenu->rows();
        const auto found =
            std::ranges::find_if(rows, [&](const PanelMenuRow& one) { return one.label.starts_with(label); });
        EXPECT_NE(found, rows.end()) << label;
        return found != rows.end() ? *found : rows.front();
    }

    std::unique_ptr<PanelMenuText> panelMenu;
    std::vector<PanelMenuRow> rows;
    int dropDownsOpened = 0;
    int permissionsAsked = 0;
    std::vector<std::string> copied;
    int changes = 0;
};

} // namespace tarnwick
