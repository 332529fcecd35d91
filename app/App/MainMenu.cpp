#include "app/App/MainMenu.h"

#include "app/StatusItemController/Menu.h"
#include "app/StatusMenuView/MenuRow.h"

#include <QAction>
#include <QWidget>

namespace tarnwick::MainMenu {

namespace {

QAction* addAction(QWidget& window, const QString& title, const QKeySequence& keys) {
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): owned by the window
    auto* const action = new QAction(title, &window);
    action->setShortcut(keys);
    window.addAction(action);
    return action;
}

} // namespace

void install(QWidget& window, Menu& menu) {
    for (const MenuItem& item : menu.items()) {
        if (item.shortcut == 0) {
            continue;
        }
        const QAction* const action =
            addAction(window, QString::fromStdString(item.title), shortcutKeys(item.shortcut));
        QObject::connect(action, &QAction::triggered, &window, [&menu, id = item.id] { menu.choose(id); });
    }
    const QAction* const close = addAction(window, QStringLiteral("Close"), shortcutKeys('w'));
    QObject::connect(close, &QAction::triggered, &window, &QWidget::close);
}

} // namespace tarnwick::MainMenu
