#pragma once

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QLineEdit>
#include <QList>
#include <QMetaProperty>
#include <QString>
#include <QTextEdit>
#include <QWidget>

/// A text that a control shows or says.
struct ShownText {
  QString text;
  std::string where;  ///< class, object name and property
};

/// Qt's own panel for files: its texts are Qt's, and file names.
inline bool isInFilePanel(const QObject* object) {
  for (const QObject* each = object->parent(); each != nullptr; each = each->parent()) {
    if (qobject_cast<const QFileDialog*>(each) != nullptr) return true;
  }
  return false;
}

/// The texts of an object that do not come from the user or the movies: not what stands in a field.
inline void addTexts(const QObject& object, QList<ShownText>& texts) {
  const bool isField = qobject_cast<const QLineEdit*>(&object) != nullptr;
  for (const char* name : {"text", "title", "windowTitle", "toolTip", "statusTip", "whatsThis", "accessibleName",
                           "accessibleDescription", "placeholderText"}) {
    if (isField && qstrcmp(name, "text") == 0) continue;
    const int index = object.metaObject()->indexOfProperty(name);
    if (index < 0) continue;
    const QString text = object.metaObject()->property(index).read(&object).toString();
    const std::string where = object.metaObject()->className() + (' ' + object.objectName().toStdString()) + ' ' + name;
    if (!text.isEmpty()) texts.append({text, where});
  }
}

/// Those of every window of the application and everything in it.
inline QList<ShownText> shownTexts() {
  QList<ShownText> texts;
  for (const QWidget* widget : QApplication::allWidgets()) {
    if (isInFilePanel(widget)) continue;
    addTexts(*widget, texts);
    for (const QAction* action : widget->actions()) addTexts(*action, texts);
  }
  return texts;
}
