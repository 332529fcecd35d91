#include "app/Watch/Presentation.h"

#include "app/Watch/JsonLine.h"
#include "app/Watch/PlainLine.h"
#include "app/Watch/ScreenLayout.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tarnwick {

namespace {

void quitUnlessWritten(LineWriter::Written written, const Presentation::Quit& quit) {
    switch (written) {
    case LineWriter::Written::whole:
    case LineWriter::Written::leftOut:
        break;
    case LineWriter::Written::closed:
        quit({});
        break;
    case LineWriter::Written::failed:
        quit("can't write the output: " + std::generic_category().message(errno));
        break;
    }
}

} // namespace

void NoteLines::set(const std::vector<std::string>& notes) {
    for (const std::string& note : notes) {
        if (std::ranges::find(told_, note) == told_.end()) {
            LineWriter(STDERR_FILENO).write("tarnwick-watch: " + note + "\n");
        }
    }
    told_ = notes;
}

LinePresentation::LinePresentation(RunLoop& loop, const Monitor& monitor, Quit quit)
    : loop_(loop), monitor_(monitor), quit_(std::move(quit)), output_(STDOUT_FILENO) {
}

void LinePresentation::show() {
    quitUnlessWritten(output_.write(line()), quit_);
}

void LinePresentation::setNotes(const std::vector<std::string>& notes) {
    noteLines_.set(notes);
}

std::string JsonPresentation::line() {
    const auto loss = monitor().lossIsKnown() ? std::optional(monitor().lossPercent()) : std::nullopt;
    const auto digits = gates_.update(loss, monitor().prefs().lossTextMode(), loop().now());
    return jsonLine(monitor(), loop().wallNow(), monitor().menuTitle(digits.has_value()));
}

std::string PlainPresentation::line() {
    return plainLine(monitor(), loop().wallNow());
}

ScreenPresentation::ScreenPresentation(
    RunLoop& loop, const Monitor& monitor, std::unique_ptr<Terminal> terminal, Quit quit)
    : loop_(loop), monitor_(monitor), terminal_(std::move(terminal)), quit_(std::move(quit)) {
    if (::isatty(STDIN_FILENO) != 0) {
        keyboard_ = loop.watchReadable(STDIN_FILENO, [this] { readKeys(); });
    }
}

void ScreenPresentation::show() {
    if (renderLoop_) {
        draw();
        return;
    }
    renderLoop_ = std::make_unique<RenderLoop>(loop_, [this] {
        // A verdict or an answer is shown at once; all else has time until the next tick.
        static_cast<void>(monitor_.status());
        static_cast<void>(monitor_.latestPingMs());
        withoutTracking([this] { draw(); });
    });
}

void ScreenPresentation::draw() {
    const ScreenContent content = screenContent(monitor_, loop_.wallNow(), grouping_, notes_);
    terminal_->draw(drawScreen(content, terminal_->size(), terminal_->isAscii()));
}

void ScreenPresentation::setNotes(const std::vector<std::string>& notes) {
    notes_ = notes;
    show();
}

void ScreenPresentation::windowResized() {
    terminal_->resize();
    show();
}

void ScreenPresentation::readKeys() {
    constexpr int controlL = 'L' & 0x1F;
    const int key = terminal_->readKey();
    switch (key) {
    case 0:
        if (terminal_->hasHungUp()) {
            keyboard_.reset();
            quit_({});
        }
        break;
    case 'q':
    case 'Q':
        quit_({});
        break;
    case controlL:
        terminal_->repaint();
        show();
        break;
    default:
        break;
    }
}

} // namespace tarnwick
