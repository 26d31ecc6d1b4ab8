#include "app/messages/MovieReasons.h"

QString MovieReasons::sentenceOf(const movie::MovieError& error) {
  const auto language = [](const char* english) { return tr(english).toStdString(); };
  return QString::fromStdString(error.message(movie::Attempt::Read, language));
}

QString MovieReasons::clauseOf(const movie::MovieError& error) {
  const auto language = [](const char* english) { return tr(english).toStdString(); };
  return QString::fromStdString(error.clause().text(language));
}
