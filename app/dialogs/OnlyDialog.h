#pragma once

#include <QDialog>

/// A new dialog of that name over a window, to be filled and shown; it is deleted once it is closed. Where one of the
/// name is shown already, that one comes to the front, and there is none to be filled: null.
QDialog* onlyDialog(QWidget& window, const QString& name);
/// The button that closes it.
QWidget* closeButton(QDialog& dialog);
