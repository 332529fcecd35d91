// The shortcuts of the program's menu, in the windows that it opens.
#pragma once

class QWidget;

namespace tarnwick {

class Menu;

namespace MainMenu {

/// Gives a window the shortcuts of the menu's items and the one that closes it. Fields have their own for
/// editing. The menu outlives the window.
void install(QWidget& window, Menu& menu);

} // namespace MainMenu

} // namespace tarnwick
