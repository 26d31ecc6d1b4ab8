#include "app/dialogs/OnlyDialog.h"

#include <QDialogButtonBox>

QDialog* onlyDialog(QWidget& window, const QString& name) {
  for (auto* const shown : window.findChildren<QDialog*>(name)) {
    if (!shown->isVisible()) continue;
    shown->raise();
    shown->activateWindow();
    return nullptr;
  }
  auto* const dialog = new QDialog(&window);
  dialog->setObjectName(name);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  return dialog;
}

QWidget* closeButton(QDialog& dialog) {
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  return buttons;
}
