// The shortcuts of the program's menu, in the windows that it opens.
#pragma once

class QWidget;

namespace tarnwick {

class Menu;

namespace MainMenu {

/// Lets a window take the shortcuts of the menu's items, which do the same there, and that for closing it.
/// Those for editing belong to its fields. The menu outlives the window.
void install(QWidget& window, const Menu& menu);

} // namespace MainMenu

} // namespace tarnwick
