// The status item's menu for panels that draw menus themselves: the status view as lines of text, the items
// below it.
#pragma once

#include "app/Observation/Observation.h"
#include "app/Reading/Format.h"
#include "app/Reading/Reading.h"
#include "app/StatusItemController/Menu.h"
#include "platform/ports/PanelMenu.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tarnwick {

/// The lines of the status view.
namespace PanelMenuHeader {

/// How many blocks the chart's line has.
inline constexpr int chartWidth = 36;

/// "Excellent · 23 ms · 3% loss"
[[nodiscard]] std::string qualityLine(const Reading& reading);
/// One block for each stretch of the last five minutes. Its height is that of the slowest reply. A stretch
/// with only losses is higher than any reply; one without pings is a dot.
[[nodiscard]] std::string chartLine(const LatencyChart::Chart& chart);
/// "Session: 1,204 sent, 3 lost, average 23.4 ms"
[[nodiscard]] std::string sessionLine(const Reading& reading, const Format::Grouping& grouping);

} // namespace PanelMenuHeader

/// Follows the reading while the menu is shown, and for half a minute after a panel has asked for it. Main
/// thread.
class PanelMenuText final : public PanelMenu {
public:
    /// Seconds for which the rows are kept up to date after a panel has read them: some panels never report
    /// that they show the menu, and some only read ahead.
    static constexpr double readingTime = 30;
    /// Seconds after a panel's last call until the menu counts as closed: some panels never report that they
    /// have closed it.
    static constexpr double longestShown = 600;

    struct Actions {
        std::function<void()> openDropDown;                  ///< after a click on the header
        std::function<void(const std::string&)> copyCommand; ///< to the clipboard
        /// Asks an administrator to let this user ping; null where nothing can ask.
        std::function<void()> allowPinging = nullptr;
    };

    /// All references outlive this object.
    PanelMenuText(RunLoop& loop, const Observed<Reading>& reading, Menu& menu, Actions actions);
    ~PanelMenuText() override;

    [[nodiscard]] std::vector<PanelMenuRow> rows() override;
    void choose(int id) override;
    void willRead() override;
    void didShow() override;
    void didHide() override;

private:
    void addNotice(std::vector<PanelMenuRow>& rows, const Notice& notice) const;
    void chooseOfNotice(int id) const;
    void followFor(double seconds);
    void refresh();

    RunLoop& loop_;
    const Observed<Reading>& reading_;
    Menu& menu_;
    Actions actions_;
    Format::Grouping grouping_ = Format::Grouping::ofUser();
    bool isShown_ = false;
    std::vector<PanelMenuRow> shownRows_;
    std::unique_ptr<RenderLoop> renderLoop_; ///< only while followed
    RunLoop::Handle endTimer_;               ///< likewise
};

} // namespace tarnwick
