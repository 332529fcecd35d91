#include "app/App/OutagesWindow.h"

#include "app/App/MainMenu.h"
#include "app/App/ProgramIcon.h"
#include "app/App/ScreenOfUser.h"
#include "app/OutagesView/OutagesView.h"
#include "platform/qt/Foreground.h"

#include <QScreen>
#include <QScrollArea>
#include <QShortcut>

#include <utility>

namespace tarnwick {

// NOLINTBEGIN(cppcoreguidelines-owning-memory): the children are owned by this window
OutagesWindow::OutagesWindow(OutagesModel::Needs needs, Menu& menu)
    : model_(std::move(needs)), view_(new OutagesView(model_, nullptr)), area_(new QScrollArea(this)) {
    setWindowTitle(QStringLiteral("Tarnwick Outages"));
    setWindowIcon(programIcon());
    area_->setWidget(view_);
    area_->setWidgetResizable(true);
    area_->setFrameShape(QFrame::NoFrame);
    // The Tab key reaches the controls, not the scroll area around them.
    area_->setFocusPolicy(Qt::NoFocus);
    setCentralWidget(area_);
    MainMenu::install(*this, menu);
    const auto* const escape = new QShortcut(Qt::Key_Escape, this);
    connect(escape, &QShortcut::activated, this, [this] { close(); });
}

// NOLINTEND(cppcoreguidelines-owning-memory)

OutagesWindow::~OutagesWindow() {
    delete area_; // the view needs the model
}

void OutagesWindow::present() {
    if (!isPlaced_) {
        center();
    }
    Foreground::show(*this);
}

void OutagesWindow::center() {
    isPlaced_ = true;
    setScreen(&screenOfUser());
    const QRect available = screenOfUser().availableGeometry();
    resize(view_->sizeHint().boundedTo(spareSize(screenOfUser())));
    QRect place(QPoint(), size());
    place.moveCenter(available.center());
    move(place.topLeft());
}

} // namespace tarnwick
