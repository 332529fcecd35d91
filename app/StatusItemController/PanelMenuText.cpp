#include "app/StatusItemController/PanelMenuText.h"

#include "app/Reading/StatsGrid.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tarnwick {

namespace {

/// Lower than the full block, so that a wall of losses stands out from slow replies.
constexpr std::array<std::string_view, 6> replyBlocks{"▁", "▂", "▃", "▄", "▅", "▆"};
constexpr std::string_view lossBlock = "█";
/// A small square at the foot. Fonts make it as wide as the other blocks, so that the line is a time axis.
constexpr std::string_view emptyBlock = "▖";

// Row ids: the lines of the header first, then the menu's items in their order, then four rows for each kind
// of notice.
constexpr int qualityId = 1;
constexpr int hostId = 2;
constexpr int chartId = 3;
constexpr int sessionId = 4;
constexpr int verdictId = 5;
constexpr int firstItemId = 10;
constexpr int firstNoticeId = 100;
constexpr int noticeIds = 4;

std::string_view block(const LatencyChart::Bucket& bucket, double scaleMax) {
    if (!bucket.worstRtt) {
        return bucket.lost ? lossBlock : emptyBlock;
    }
    const double share = *bucket.worstRtt / scaleMax;
    const auto step = static_cast<std::size_t>(share * static_cast<double>(replyBlocks.size()));
    return replyBlocks[std::min(step, replyBlocks.size() - 1)];
}

PanelMenuRow line(int id, std::string text) {
    return {.id = id, .label = std::move(text), .enabled = false};
}

int noticeId(Notice::Kind kind) {
    return firstNoticeId + static_cast<int>(kind) * noticeIds;
}

int copyId(Notice::Kind kind) {
    return noticeId(kind) + 2;
}

constexpr int allowId = firstNoticeId + static_cast<int>(Notice::Kind::mayNotPing) * noticeIds + 3;

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

std::string PanelMenuHeader::qualityLine(const Reading& reading) {
    if (reading.isDown() || reading.isPaused()) {
        return reading.qualityTitle;
    }
    std::string text = reading.qualityTitle + " · " + reading.latencyText;
    if (reading.lossText) {
        text += " · " + *reading.lossText;
    }
    return text;
}

std::string PanelMenuHeader::chartLine(const LatencyChart::Chart& chart) {
    const double top = chart.scaleMax();
    std::string text;
    for (std::size_t column = 0; column < chartWidth; ++column) {
        const std::size_t bucket = column * chart.buckets.size() / chartWidth;
        text += bucket < chart.buckets.size() ? block(chart.buckets[bucket], top) : emptyBlock;
    }
    return text;
}

std::string PanelMenuHeader::sessionLine(const Reading& reading, const Format::Grouping& grouping) {
    const auto rows = StatsGrid::rows(reading.session, reading.site, grouping);
    std::string text = std::string(StatsGrid::sessionTitle) + ": ";
    text += rows[StatsGrid::sentRow].session + " sent, ";
    text += rows[StatsGrid::lostRow].session + " lost";
    if (reading.session.replied > 0) {
        text += ", average " + rows[StatsGrid::averageRow].session;
    }
    return text;
}

PanelMenuText::PanelMenuText(RunLoop& loop, const Observed<Reading>& reading, Menu& menu, Actions actions)
    : loop_(loop), reading_(reading), menu_(menu), actions_(std::move(actions)) {
}

PanelMenuText::~PanelMenuText() {
    didHide();
}

std::vector<PanelMenuRow> PanelMenuText::rows() {
    menu_.refresh();
    const Reading& reading = reading_.get();
    std::vector<PanelMenuRow> rows{
        {.id = qualityId, .label = PanelMenuHeader::qualityLine(reading)},
        line(hostId, Format::elided(reading.hostLine)),
    };
    if (reading.verdict) {
        rows.push_back(line(verdictId, reading.verdict->evidence));
    }
    for (const Notice& notice : reading.notices) {
        addNotice(rows, notice);
    }
    rows.push_back(line(chartId, PanelMenuHeader::chartLine(reading.chart)));
    rows.push_back(line(sessionId, PanelMenuHeader::sessionLine(reading, grouping_)));
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
        actions_.openDropDown();
        return;
    }
    if (id >= firstNoticeId) {
        chooseOfNotice(id);
        return;
    }
    const auto position = static_cast<std::size_t>(id - firstItemId);
    if (id >= firstItemId && position < menu_.items().size()) {
        menu_.choose(menu_.items()[position].id);
    }
}

void PanelMenuText::addNotice(std::vector<PanelMenuRow>& rows, const Notice& notice) const {
    const int id = noticeId(notice.kind);
    rows.push_back(line(id, notice.text));
    rows.back().iconName = "dialog-warning-symbolic";
    if (notice.command) {
        rows.push_back(line(id + 1, *notice.command));
        rows.push_back(
            {.id = copyId(notice.kind), .label = "Copy Command", .iconName = "edit-copy-symbolic"});
    }
    if (notice.kind == Notice::Kind::mayNotPing && actions_.allowPinging) {
        rows.push_back({.id = allowId, .label = "Allow Pinging…"});
    }
}

void PanelMenuText::chooseOfNotice(int id) const {
    if (id == allowId && actions_.allowPinging) {
        actions_.allowPinging();
    }
    for (const Notice& notice : reading_.get().notices) {
        if (notice.command && copyId(notice.kind) == id) {
            actions_.copyCommand(*notice.command);
        }
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
