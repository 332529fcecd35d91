#include "app/Watch/Presentation.h"

#include "app/Watch/JsonLine.h"
#include "app/Watch/PlainLine.h"
#include "app/Watch/ScreenLayout.h"
#include "core/Text.h"

#include <algorithm>
#include <unistd.h>
#include <utility>

namespace tarnwick {

NoticeLines::NoticeLines(RunLoop& loop, const Observed<Reading>& reading)
    : output_(STDERR_FILENO), renderLoop_(loop, [this, &reading] { tell(reading.get().notices); }) {
}

void NoticeLines::tell(const Notices& notices) {
    for (const Notice& notice : notices) {
        if (std::ranges::find(told_, notice) == told_.end()) {
            output_.write("tarnwick-watch: " + Text::printable(notice.line()) + "\n");
        }
    }
    told_ = notices;
}

LinePresentation::LinePresentation(RunLoop& loop, const Observed<Reading>& reading, Quit quit)
    : loop_(loop),
      reading_(reading),
      quit_(std::move(quit)),
      output_(STDOUT_FILENO),
      noticeLines_(loop, reading) {
}

void LinePresentation::show(double judgedAt) {
    switch (output_.write(line(judgedAt))) {
    case LineWriter::Written::taken:
    case LineWriter::Written::leftOut:
        break;
    case LineWriter::Written::closed:
        quit_({});
        break;
    case LineWriter::Written::failed:
        quit_("can't write the output: " + output_.error().message());
        break;
    }
}

std::string JsonPresentation::line(double judgedAt) {
    const Reading& present = reading();
    const auto digits = gates_.update(present.knownLoss(), present.lossTextMode, loop().now());
    return jsonLine(present, loop().wallNow(), judgedAt, present.menuTitle(digits.has_value()));
}

std::string PlainPresentation::line(double /*judgedAt*/) {
    return plainLine(reading(), loop().wallNow());
}

ScreenPresentation::ScreenPresentation(
    RunLoop& loop, const Observed<Reading>& reading, PastSource past, std::unique_ptr<Terminal> terminal,
    Commands commands)
    : loop_(loop),
      reading_(reading),
      past_(std::move(past)),
      terminal_(std::move(terminal)),
      commands_(std::move(commands)),
      readsKeys_(::isatty(STDIN_FILENO) != 0),
      renderLoop_(loop, [this] { drawNews(); }) {
    if (readsKeys_) {
        keyboard_ = loop.watchReadable(STDIN_FILENO, [this] { readKeys(); });
    }
}

void ScreenPresentation::show(double /*judgedAt*/) {
    draw();
}

void ScreenPresentation::drawNews() {
    const Reading& reading = reading_.get();
    if (reading.status != drawnStatus_ || reading.latestPingMs != drawnLatency_
        || reading.pausedUntil != drawnPause_ || reading.notices != drawnNotices_) {
        draw();
    }
}

void ScreenPresentation::draw() {
    const Reading& reading = reading_.get();
    drawnStatus_ = reading.status;
    drawnLatency_ = reading.latestPingMs;
    drawnPause_ = reading.pausedUntil;
    drawnNotices_ = reading.notices;
    terminal_->draw(drawScreen(
        reading,
        {.grouping = grouping_, .ascii = terminal_->isAscii(), .readsKeys = readsKeys_, .past = pastChart()},
        terminal_->size()));
}

const HistoryChart::Chart* ScreenPresentation::pastChart() {
    if (past_.reach() == HistoryChart::Reach::fiveMinutes) {
        return nullptr;
    }
    const auto now = std::chrono::floor<std::chrono::seconds>(loop_.wallNow());
    return &past_.chart(pastColumnsOn(terminal_->size()), reading_.get(), now);
}

void ScreenPresentation::windowResized() {
    terminal_->resize();
    draw();
}

void ScreenPresentation::readKeys() {
    constexpr int controlL = 'L' & 0x1F;
    const int key = terminal_->readKey();
    switch (key) {
    case 0:
        if (terminal_->hasHungUp()) {
            keyboard_.reset();
            commands_.quit({});
        }
        break;
    case 'q':
    case 'Q':
        commands_.quit({});
        break;
    case 'p':
    case 'P':
        commands_.togglePause();
        break;
    case controlL:
        terminal_->repaint();
        draw();
        break;
    default:
        takeKey(key);
        break;
    }
}

void ScreenPresentation::takeKey(int key) {
    const int index = key - '1';
    if (index >= 0 && index < static_cast<int>(HistoryChart::allReaches.size())) {
        past_.choose(HistoryChart::allReaches.at(static_cast<std::size_t>(index)));
        draw();
    }
}

} // namespace tarnwick
