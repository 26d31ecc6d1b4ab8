#pragma once

#include <QDialog>

class QCheckBox;

/// The preferences. Not modal; closing hides it.
class PreferencesDialog : public QDialog {
  Q_OBJECT

 public:
  explicit PreferencesDialog(QWidget& window);

  QCheckBox* qcLoggingCheck;
};
