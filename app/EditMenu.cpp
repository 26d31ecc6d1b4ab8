#include "app/EditMenu.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPointer>
#include <QTextDocument>
#include <QTextEdit>

namespace {

bool clipboardHasText() {
  const QMimeData* const data = QApplication::clipboard()->mimeData();
  return data != nullptr && data->hasText();
}

/// Which of the operations have something to do.
struct Possible {
  bool undo = false, redo = false, cut = false, copy = false, paste = false, selectAll = false;
};

Possible possibleIn(const QWidget* widget) {
  if (const auto* line = qobject_cast<const QLineEdit*>(widget)) {
    const bool isEdited = !line->isReadOnly(), isSelected = line->hasSelectedText();
    return {line->isUndoAvailable(),        line->isRedoAvailable(), isEdited && isSelected, isSelected,
            isEdited && clipboardHasText(), !line->text().isEmpty()};
  }
  if (const auto* text = qobject_cast<const QTextEdit*>(widget)) {
    const QTextDocument& document = *text->document();
    const bool isEdited = !text->isReadOnly(), isSelected = text->textCursor().hasSelection();
    return {isEdited && document.isUndoAvailable(),
            isEdited && document.isRedoAvailable(),
            isEdited && isSelected,
            isSelected,
            isEdited && clipboardHasText(),
            !document.isEmpty()};
  }
  return {};
}

/// One thing done to a text.
struct Operation {
  const char* name;  ///< of the action, and of the slot that every text has for it
  QString text;
  QKeySequence key;
  bool Possible::*isPossible;
};

QList<Operation> operations() {
  return {
      {"undo", QCoreApplication::translate("EditMenu", "&Undo"), Qt::CTRL | Qt::Key_Z, &Possible::undo},
      {"redo", QCoreApplication::translate("EditMenu", "&Redo"), Qt::CTRL | Qt::SHIFT | Qt::Key_Z, &Possible::redo},
      {"cut", QCoreApplication::translate("EditMenu", "Cu&t"), Qt::CTRL | Qt::Key_X, &Possible::cut},
      {"copy", QCoreApplication::translate("EditMenu", "&Copy"), Qt::CTRL | Qt::Key_C, &Possible::copy},
      {"paste", QCoreApplication::translate("EditMenu", "&Paste"), Qt::CTRL | Qt::Key_V, &Possible::paste},
      {"selectAll", QCoreApplication::translate("EditMenu", "Select &All"), Qt::CTRL | Qt::Key_A, &Possible::selectAll},
  };
}

/// The window's control in focus; menus that are walked through by key have it only for a while.
class FocusBesideMenus : public QObject {
 public:
  explicit FocusBesideMenus(QMainWindow& window) : QObject(&window), window_(window) {
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* /*old*/, QWidget* now) {
      if (now != nullptr && now->window() == &window_ && now != window_.menuBar()) last_ = now;
    });
  }
  QWidget* widget() const {
    QWidget* const now = window_.focusWidget();
    return now == window_.menuBar() ? last_.data() : now;
  }

 private:
  QMainWindow& window_;
  QPointer<QWidget> last_;
};

}  // namespace

void fillEditMenu(QMenu& menu, QMainWindow& window) {
  auto* const focus = new FocusBesideMenus(window);
  for (const Operation& operation : operations()) {
    QAction* const action = menu.addAction(operation.text);
    action->setObjectName(QLatin1String(operation.name));
    action->setShortcut(operation.key);
    action->setAutoRepeat(false);
    const auto isPossible = [focus, which = operation.isPossible] { return possibleIn(focus->widget()).*which; };
    QObject::connect(action, &QAction::triggered, focus, [isPossible, focus, name = operation.name] {
      if (isPossible()) QMetaObject::invokeMethod(focus->widget(), name);
    });
    QObject::connect(&menu, &QMenu::aboutToShow, action, [isPossible, action] { action->setEnabled(isPossible()); });
    if (operation.name == QLatin1String("redo")) menu.addSeparator();
  }
}
