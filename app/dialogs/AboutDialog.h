#pragma once

class QWidget;

/// Shows over the window, once: name, version and licence of the application, and of the libraries that it is linked
/// with. Not modal; goes when it is closed.
void showAboutDialog(QWidget& window);
