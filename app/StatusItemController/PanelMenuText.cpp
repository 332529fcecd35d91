#include "app/StatusItemController/PanelMenuText.h"

#include "app/Reading/HeaderText.h"
#include "app/Reading/LatencyBuckets.h"
#include "app/Reading/StatsRows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace tarnwick {

namespace {

/// Lower than the full block, so that a wall of losses stands out from slow replies.
constexpr std::array<std::string_view, 6> replyBlocks{"▁", "▂", "▃", "▄", "▅", "▆"};
constexpr std::string_view lossBlock = "█";
constexpr std::string_view emptyBlock = "·";

// Row ids: the lines of the header first, then the menu's items in their order.
constexpr int qualityId = 1;
constexpr int hostId = 2;
constexpr int chartId = 3;
constexpr int sessionId = 4;
constexpr int firstItemId = 10;

std::string_view block(const LatencyChart::Bucket& bucket, double scaleMax) {
    if (!bucket.worstRtt) {
        return bucket.lost ? lossBlock : emptyBlock;
    }
    const double share = std::min(*bucket.worstRtt / scaleMax, 1.0);
    const auto step = static_cast<std::size_t>(share * static_cast<double>(replyBlocks.size()));
    return replyBlocks[std::min(step, replyBlocks.size() - 1)];
}

PanelMenuRow line(int id, std::string text) {
    return {.id = id, .label = std::move(text), .enabled = false};
}

std::string shortcutKey(char shortcut) {
    if (shortcut == ',') {
        return "comma";
    }
    return shortcut != 0 ? std::string(1, shortcut) : std::string();
}

PanelMenuRow itemRow(int id, const MenuItem& item) {
    return {
        .id = id,
        .isSeparator = item.id == MenuItem::Id::separator,
        .label = item.title,
        .iconName = item.iconName,
        .shortcutKey = shortcutKey(item.shortcut),
        .enabled = item.enabled,
        .visible = !item.hidden,
    };
}

} // namespace

std::string PanelMenuHeader::qualityLine(const Monitor& monitor) {
    std::string text = monitor.qualityTitle();
    if (monitor.status() == Monitor::Status::down) {
        return text;
    }
    text += " · " + HeaderText::latency(monitor);
    if (const std::optional<std::string> loss = HeaderText::loss(monitor)) {
        text += " · " + *loss;
    }
    return text;
}

std::string PanelMenuHeader::chartLine(const Monitor& monitor, RunLoop::WallTime now) {
    const Preferences& prefs = monitor.prefs();
    const auto buckets = LatencyChart::buckets(monitor.samples(), now, prefs.pingInterval());
    const double top = LatencyChart::scaleMax(LatencyChart::replyTimes(buckets), prefs.slowPingThresholdMs());
    std::string text;
    for (std::size_t column = 0; column < chartWidth; ++column) {
        text += block(buckets[column * buckets.size() / chartWidth], top);
    }
    return text;
}

std::string PanelMenuHeader::sessionLine(const Monitor& monitor, const Format::Grouping& grouping) {
    const StatCounter& session = monitor.ledger().session();
    const auto rows = StatsGrid::rows(session, monitor.ledger().site(), grouping);
    std::string text = std::string(StatsGrid::sessionTitle) + ": ";
    text += rows[StatsGrid::sentRow].session + " sent, ";
    text += rows[StatsGrid::lostRow].session + " lost";
    if (session.replied > 0) {
        text += ", average " + rows[StatsGrid::averageRow].session;
    }
    return text;
}

PanelMenuText::PanelMenuText(
    RunLoop& loop, const Monitor& monitor, Menu& menu, std::function<void()> openDropDown)
    : loop_(loop), monitor_(monitor), menu_(menu), openDropDown_(std::move(openDropDown)) {
}

PanelMenuText::~PanelMenuText() {
    didHide();
}

std::vector<PanelMenuRow> PanelMenuText::rows() const {
    menu_.refresh();
    std::vector<PanelMenuRow> rows{
        {.id = qualityId, .label = PanelMenuHeader::qualityLine(monitor_)},
        line(hostId, HeaderText::hostLine(monitor_)),
        line(chartId, PanelMenuHeader::chartLine(monitor_, loop_.wallNow())),
        line(sessionId, PanelMenuHeader::sessionLine(monitor_, grouping_)),
    };
    int id = firstItemId;
    for (const MenuItem& item : menu_.items()) {
        if (item.id != MenuItem::Id::header) {
            rows.push_back(itemRow(id, item));
        }
        ++id;
    }
    return rows;
}

void PanelMenuText::choose(int id) {
    if (id == qualityId) {
        openDropDown_();
        return;
    }
    const auto position = static_cast<std::size_t>(id - firstItemId);
    if (id >= firstItemId && position < menu_.items().size()) {
        menu_.choose(menu_.items()[position].id);
    }
}

void PanelMenuText::willRead() {
    followFor(isShown_ ? longestShown : readingTime);
}

void PanelMenuText::didShow() {
    if (!isShown_) {
        isShown_ = true;
        menu_.willOpen();
    }
    followFor(longestShown);
}

void PanelMenuText::didHide() {
    renderLoop_.reset();
    endTimer_.reset();
    if (isShown_) {
        isShown_ = false;
        menu_.didClose();
    }
}

void PanelMenuText::followFor(double seconds) {
    endTimer_ = loop_.after(seconds, [this] { didHide(); });
    if (!renderLoop_) {
        renderLoop_ = std::make_unique<RenderLoop>(loop_, [this] { refresh(); });
    }
}

void PanelMenuText::refresh() {
    std::vector<PanelMenuRow> present = rows();
    if (present == shownRows_) {
        return;
    }
    shownRows_ = std::move(present);
    if (onChange) {
        onChange();
    }
}

} // namespace tarnwick
