#include "app/KeyTable.h"

#include <QAction>
#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QShortcut>
#include <utility>

#include "app/dialogs/OnlyDialog.h"
#include "app/widgets/TextLook.h"

namespace {

QString textOf(const QList<QKeySequence>& keys) {
  QStringList names;
  for (const QKeySequence& key : keys) names << key.toString(QKeySequence::NativeText);
  return names.join(QStringLiteral("   "));
}

/// A menu's text without what only a menu shows.
QString plainText(QString text) {
  return text.remove(u'&').remove(u'…').trimmed();
}

void addRow(QGridLayout& grid, const KeyRow& row) {
  const int line = grid.rowCount();
  auto* const keys = new QLabel(textOf(row.keys));
  setBold(*keys);
  keys->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  grid.addWidget(keys, line, 0);
  grid.addWidget(new QLabel(row.what), line, 1);
}

}  // namespace

void KeyTable::add(const QString& what, const QList<QKeySequence>& keys, std::function<void()> act, KeyRepeat repeat) {
  rows_.append({what, keys, std::move(act), repeat, nullptr});
}

void KeyTable::addMenus(const QWidget& window) {
  for (const QMenu* menu : window.findChildren<QMenu*>()) {
    for (QAction* action : menu->actions()) {
      if (action->shortcut().isEmpty()) continue;
      rows_.append(
          {plainText(action->text()), action->shortcuts(), [action] { action->trigger(); }, KeyRepeat::No, action});
    }
  }
}

void KeyTable::install(QWidget& window) const {
  for (const KeyRow& row : rows_) {
    if (row.action != nullptr) {
      window.addAction(row.action);
      continue;
    }
    auto* const action = new QAction(row.what, &window);
    action->setShortcuts(row.keys);
    action->setAutoRepeat(row.repeat == KeyRepeat::Yes);
    QObject::connect(action, &QAction::triggered, &window, row.act);
    window.addAction(action);
  }
}

void KeyTable::show(QWidget& window) const {
  auto* const list = onlyDialog(window, QStringLiteral("keys"));
  if (list == nullptr) return;
  list->setWindowTitle(tr("Keys"));
  auto* const column = new QVBoxLayout(list);
  column->setSizeConstraint(QLayout::SetFixedSize);
  auto* const halves = new QHBoxLayout;
  halves->setSpacing(32);
  const qsizetype half = (rows_.size() + 1) / 2;
  for (const QList<KeyRow>& rows : {rows_.first(half), rows_.sliced(half)}) {
    auto* const grid = new QGridLayout;
    grid->setHorizontalSpacing(16);
    grid->setVerticalSpacing(6);  // else that of the row around it
    for (const KeyRow& row : rows) addRow(*grid, row);
    grid->setRowStretch(grid->rowCount(), 1);
    halves->addLayout(grid);
  }
  column->addLayout(halves);
  column->addWidget(closeButton(*list));
  QObject::connect(new QShortcut(QKeySequence(QKeySequence::HelpContents), list), &QShortcut::activated, list,
                   &QDialog::reject);
  list->show();
}
