#include "app/KeyTable.h"

#include <QAction>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QShortcut>
#include <utility>

namespace {

QString textOf(const QList<QKeySequence>& keys) {
  QStringList names;
  for (const QKeySequence& key : keys) names << key.toString(QKeySequence::NativeText);
  return names.join(QStringLiteral("   "));
}

void addRow(QGridLayout& grid, const KeyRow& row) {
  const int line = grid.rowCount();
  auto* const keys = new QLabel(textOf(row.keys));
  QFont bold = keys->font();
  bold.setBold(true);
  keys->setFont(bold);
  keys->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  grid.addWidget(keys, line, 0);
  grid.addWidget(new QLabel(row.what), line, 1);
}

}  // namespace

void KeyTable::add(const QString& what, const QList<QKeySequence>& keys, std::function<void()> act, KeyRepeat repeat) {
  rows_.append({what, keys, std::move(act), repeat});
}

void KeyTable::install(QWidget& window) const {
  for (const KeyRow& row : rows_) {
    auto* const action = new QAction(row.what, &window);
    action->setShortcuts(row.keys);
    action->setAutoRepeat(row.repeat == KeyRepeat::Yes);
    QObject::connect(action, &QAction::triggered, &window, row.act);
    window.addAction(action);
  }
}

void KeyTable::show(QWidget& window) const {
  const QString name = QStringLiteral("keys");
  for (auto* const shown : window.findChildren<QDialog*>(name)) {
    if (!shown->isVisible()) continue;
    shown->raise();
    return shown->activateWindow();
  }
  auto* const list = new QDialog(&window);
  list->setObjectName(name);
  list->setAttribute(Qt::WA_DeleteOnClose);
  list->setWindowTitle(QObject::tr("Keys"));
  auto* const column = new QVBoxLayout(list);
  column->setSizeConstraint(QLayout::SetFixedSize);
  auto* const grid = new QGridLayout;
  grid->setHorizontalSpacing(16);
  for (const KeyRow& row : rows_) addRow(*grid, row);
  column->addLayout(grid);
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  QObject::connect(buttons, &QDialogButtonBox::rejected, list, &QDialog::reject);
  column->addWidget(buttons);
  QObject::connect(new QShortcut(QKeySequence(QKeySequence::HelpContents), list), &QShortcut::activated, list,
                   &QDialog::reject);
  list->show();
}
