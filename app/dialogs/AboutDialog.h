#pragma once

#include <QDialog>

/// Name, version and licence of the application, and of the libraries that it is linked with. Not modal; goes when it
/// is closed.
class AboutDialog : public QDialog {
  Q_OBJECT

 public:
  explicit AboutDialog(QWidget& window);

  /// Shows it over the window, once.
  static void showOver(QWidget& window);
};
