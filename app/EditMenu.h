#pragma once

class QMainWindow;
class QMenu;

/// Adds undo, redo, cut, copy, paste and select all. They act on the window's text that has the focus, or had it when
/// the menu took it, and are enabled, each time the menu opens, where they have something to do.
void fillEditMenu(QMenu& menu, QMainWindow& window);
