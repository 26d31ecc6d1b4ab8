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

/// One thing done to a text.
struct Operation {
  const char* name;
  QString text;
  QKeySequence key;
  bool (*possibleInLine)(const QLineEdit&);
  bool (*possibleInText)(const QTextEdit&);
  void (*inLine)(QLineEdit&);
  void (*inText)(QTextEdit&);
};

QList<Operation> operations() {
  using Line = QLineEdit;
  using Text = QTextEdit;
  return {
      {"undo", QCoreApplication::translate("EditMenu", "&Undo"), QKeySequence(Qt::CTRL | Qt::Key_Z),
       [](const Line& line) { return line.isUndoAvailable(); },
       [](const Text& text) { return !text.isReadOnly() && text.document()->isUndoAvailable(); },
       [](Line& line) { line.undo(); }, [](Text& text) { text.undo(); }},
      {"redo", QCoreApplication::translate("EditMenu", "&Redo"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z),
       [](const Line& line) { return line.isRedoAvailable(); },
       [](const Text& text) { return !text.isReadOnly() && text.document()->isRedoAvailable(); },
       [](Line& line) { line.redo(); }, [](Text& text) { text.redo(); }},
      {"cut", QCoreApplication::translate("EditMenu", "Cu&t"), QKeySequence(Qt::CTRL | Qt::Key_X),
       [](const Line& line) { return !line.isReadOnly() && line.hasSelectedText(); },
       [](const Text& text) { return !text.isReadOnly() && text.textCursor().hasSelection(); },
       [](Line& line) { line.cut(); }, [](Text& text) { text.cut(); }},
      {"copy", QCoreApplication::translate("EditMenu", "&Copy"), QKeySequence(Qt::CTRL | Qt::Key_C),
       [](const Line& line) { return line.hasSelectedText(); },
       [](const Text& text) { return text.textCursor().hasSelection(); }, [](Line& line) { line.copy(); },
       [](Text& text) { text.copy(); }},
      {"paste", QCoreApplication::translate("EditMenu", "&Paste"), QKeySequence(Qt::CTRL | Qt::Key_V),
       [](const Line& line) { return !line.isReadOnly() && clipboardHasText(); },
       [](const Text& text) { return !text.isReadOnly() && clipboardHasText(); }, [](Line& line) { line.paste(); },
       [](Text& text) { text.paste(); }},
      {"selectAll", QCoreApplication::translate("EditMenu", "Select &All"), QKeySequence(Qt::CTRL | Qt::Key_A),
       [](const Line& line) { return !line.text().isEmpty(); },
       [](const Text& text) { return !text.document()->isEmpty(); }, [](Line& line) { line.selectAll(); },
       [](Text& text) { text.selectAll(); }},
  };
}

bool isPossible(const Operation& operation, const QWidget* widget) {
  if (const auto* line = qobject_cast<const QLineEdit*>(widget)) return operation.possibleInLine(*line);
  if (const auto* text = qobject_cast<const QTextEdit*>(widget)) return operation.possibleInText(*text);
  return false;
}

void perform(const Operation& operation, QWidget* widget) {
  if (!isPossible(operation, widget)) return;
  if (auto* line = qobject_cast<QLineEdit*>(widget)) operation.inLine(*line);
  if (auto* text = qobject_cast<QTextEdit*>(widget)) operation.inText(*text);
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
    QObject::connect(action, &QAction::triggered, focus, [operation, focus] { perform(operation, focus->widget()); });
    QObject::connect(&menu, &QMenu::aboutToShow, action,
                     [operation, focus, action] { action->setEnabled(isPossible(operation, focus->widget())); });
    if (operation.name == QLatin1String("redo")) menu.addSeparator();
  }
}
