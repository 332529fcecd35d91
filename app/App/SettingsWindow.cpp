#include "app/App/SettingsWindow.h"

#include "app/App/MainMenu.h"
#include "app/App/ProgramIcon.h"
#include "app/App/ScreenOfUser.h"
#include "app/SettingsView/SettingsView.h"
#include "platform/qt/Foreground.h"

#include <QEvent>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QWindow>

#include <algorithm>

namespace tarnwick {

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this window
SettingsWindow::SettingsWindow(SettingsModel& model, RunLoop& loop, Menu& menu)
    : QMainWindow(
          nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      view_(new SettingsView(model, loop, nullptr)),
      area_(new QScrollArea(this)) {
    setWindowTitle(QStringLiteral("Tarnwick Settings"));
    setWindowIcon(programIcon());
    area_->setWidget(view_);
    area_->setWidgetResizable(true);
    area_->setFrameShape(QFrame::NoFrame);
    // The Tab key reaches the form's controls, not the scroll area around them.
    area_->setFocusPolicy(Qt::NoFocus);
    setCentralWidget(area_);
    view_->installEventFilter(this);
    MainMenu::install(*this, menu);
    const auto* const escape = new QShortcut(Qt::Key_Escape, this);
    connect(escape, &QShortcut::activated, this, [this] {
        view_->dropDrafts();
        close();
    });
    fit();
}

SettingsWindow::~SettingsWindow() {
    // Before the window closes: closing takes the focus from a field, which would commit its draft.
    delete area_;
}

// NOLINTEND(cppcoreguidelines-owning-memory)

void SettingsWindow::present() {
    if (!isPlaced_) {
        center();
    }
    Foreground::show(*this);
}

void SettingsWindow::center() {
    isPlaced_ = true;
    const QRect available = screenOfUser().availableGeometry();
    setScreen(&screenOfUser());
    winId(); // creates the native window, which knows its screen
    // Posted: the window arrives on the new screen with its old size.
    connect(windowHandle(), &QWindow::screenChanged, this, [this] { followScreen(); }, Qt::QueuedConnection);
    followScreen();
    QRect place(QPoint(), size());
    place.moveCenter(available.center());
    move(place.topLeft());
}

void SettingsWindow::followScreen() {
    disconnect(screenChange_);
    screenChange_ = connect(screen(), &QScreen::availableGeometryChanged, this, [this] { fit(); });
    fit();
}

void SettingsWindow::fit() {
    const QSize most = spareSize(*screen());
    const QSize form = view_->sizeHint();
    QSize wanted = form;
    if (form.height() > most.height()) {
        wanted.rwidth() += area_->verticalScrollBar()->sizeHint().width();
    }
    if (form.width() > most.width()) {
        wanted.rheight() += area_->horizontalScrollBar()->sizeHint().height();
    }
    setFixedSize(wanted.boundedTo(most));
}

void SettingsWindow::keepOnScreen() {
    const QRect available = screen()->availableGeometry();
    const QRect frame = frameGeometry();
    if (frame.bottom() > available.bottom()) {
        move(frame.x(), std::max(available.top(), available.bottom() + 1 - frame.height()));
    }
}

bool SettingsWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == view_ && event->type() == QEvent::LayoutRequest) {
        const int before = height();
        fit();
        if (isVisible() && height() > before) {
            keepOnScreen();
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

} // namespace tarnwick
