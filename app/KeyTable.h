#pragma once

#include <QCoreApplication>
#include <QKeySequence>
#include <QList>
#include <QString>
#include <functional>

class QAction;
class QWidget;

/// Whether a key that is held goes on and on.
enum class KeyRepeat { No, Yes };

/// One thing the window does on a key.
struct KeyRow {
  QString what;  ///< as the list of keys says it
  QList<QKeySequence> keys;
  std::function<void()> act;
  KeyRepeat repeat = KeyRepeat::No;
  QAction* action = nullptr;  ///< of a menu, which does it; else the window gets one for the row
};

/// Every key of the window: the one table that the window's shortcuts and the list under F1 are made from.
class KeyTable {
  Q_DECLARE_TR_FUNCTIONS(KeyTable)

 public:
  void add(const QString& what, const QList<QKeySequence>& keys, std::function<void()> act,
           KeyRepeat repeat = KeyRepeat::No);
  /// A row for each shortcut of the window's menus. The actions outlive the table.
  void addMenus(const QWidget& window);
  const QList<KeyRow>& rows() const { return rows_; }

  /// Gives the window an action for each row, a menu's own where the row has it.
  void install(QWidget& window) const;
  /// Shows the list over the window, once; not modal, closed by Escape or F1.
  void show(QWidget& window) const;

 private:
  QList<KeyRow> rows_;
};
