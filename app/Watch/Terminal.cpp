#include "app/Watch/Terminal.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <langinfo.h>
#include <poll.h>
#include <string_view>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#define NCURSES_WIDECHAR 1
#include <curses.h>

namespace tarnwick {

namespace {

constexpr short goodPair = 1;
constexpr short warnPair = 2;
constexpr short badPair = 3;

/// The terminal's own green, yellow and red: its user has made them legible on their background.
bool startColors() {
    const char* noColor = std::getenv("NO_COLOR");
    if ((noColor != nullptr && *noColor != '\0') || !has_colors() || start_color() == ERR) {
        return false;
    }
    const short background = use_default_colors() == OK ? -1 : COLOR_BLACK;
    init_pair(goodPair, COLOR_GREEN, background);
    init_pair(warnPair, COLOR_YELLOW, background);
    init_pair(badPair, COLOR_RED, background);
    return true;
}

bool takesOutput() {
    pollfd output{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
    return ::poll(&output, 1, 0) == 1 && (output.revents & POLLOUT) != 0;
}

/// Output that the user has paused would hold up the end.
void resumeOutput() {
    if (!takesOutput()) {
        // Only after a pause by call does the system end a pause by key.
        ::tcflow(STDOUT_FILENO, TCOOFF);
        ::tcflow(STDOUT_FILENO, TCOON);
    }
}

} // namespace

struct Terminal::Screen {
    SCREEN* handle;
    bool hasColors;

    struct Look {
        attr_t attributes;
        short pair;
    };

    [[nodiscard]] Look look(TextStyle style) const {
        switch (style) {
        case TextStyle::strong:
            return {A_BOLD, 0};
        case TextStyle::secondary:
            return {A_DIM, 0};
        case TextStyle::good:
            return {A_NORMAL, colored(goodPair)};
        case TextStyle::warn:
            return {A_NORMAL, colored(warnPair)};
        case TextStyle::bad:
            return {A_NORMAL, colored(badPair)};
        case TextStyle::strongBad:
            return {A_BOLD, colored(badPair)};
        case TextStyle::plain:
            break;
        }
        return {A_NORMAL, 0};
    }

    [[nodiscard]] short colored(short pair) const { return hasColors ? pair : short{0}; }
};

std::unique_ptr<Terminal> Terminal::open() {
    if (::isatty(STDOUT_FILENO) == 0) {
        return nullptr;
    }
    SCREEN* handle = newterm(nullptr, stdout, stdin);
    if (handle == nullptr) {
        return nullptr;
    }
    std::array<char, 4> cursorAddress{"cup"};
    if (tigetstr(cursorAddress.data()) == nullptr) {
        endwin();
        delscreen(handle);
        return nullptr;
    }
    cbreak();
    noecho();
    curs_set(0);
    nodelay(stdscr, TRUE);
    leaveok(stdscr, TRUE);
    // Rows change in place: shifting characters along them saves little and not every terminal does it right.
    idcok(stdscr, FALSE);
    // Keys arrive as they are; no waiting to tell Escape from a function key.
    keypad(stdscr, FALSE);
    return std::unique_ptr<Terminal>(
        new Terminal(std::make_unique<Screen>(Screen{.handle = handle, .hasColors = startColors()})));
}

Terminal::Terminal(std::unique_ptr<Screen> screen)
    : screen_(std::move(screen)), isAscii_(std::string_view(nl_langinfo(CODESET)) != "UTF-8") {
}

Terminal::~Terminal() {
    resumeOutput();
    endwin();
    delscreen(screen_->handle);
}

ScreenSize Terminal::size() const {
    return {getmaxy(stdscr), getmaxx(stdscr)};
}

void Terminal::resize() {
    winsize window{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_row > 0 && window.ws_col > 0) {
        resizeterm(window.ws_row, window.ws_col);
        repaint();
    }
}

void Terminal::draw(const Canvas& canvas) {
    if (!takesOutput()) {
        return;
    }
    erase();
    const int rows = std::min(canvas.size().rows, getmaxy(stdscr));
    const int columns = std::min(canvas.size().columns, getmaxx(stdscr));
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const Cell& cell = canvas.at(row, column);
            if (cell.glyph == 0 || cell == Cell{}) {
                continue;
            }
            const Screen::Look look = screen_->look(cell.style);
            const std::array<wchar_t, 2> text{static_cast<wchar_t>(cell.glyph), L'\0'};
            cchar_t character{};
            setcchar(&character, text.data(), look.attributes, look.pair, nullptr);
            mvadd_wch(row, column, &character);
        }
    }
    refresh();
}

void Terminal::repaint() {
    clearok(stdscr, TRUE);
}

bool Terminal::hasHungUp() const {
    pollfd input{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    return ::poll(&input, 1, 0) == 1 && (input.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}

int Terminal::readKey() {
    const int key = getch();
    return key == ERR ? 0 : key;
}

} // namespace tarnwick
