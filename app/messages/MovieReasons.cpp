#include "app/messages/MovieReasons.h"

namespace {

std::string translated(const char* english) {
  return MovieReasons::tr(english).toStdString();
}

}  // namespace

QString MovieReasons::sentenceOf(const movie::MovieError& error) {
  return QString::fromStdString(error.message(movie::Attempt::Read, translated));
}

QString MovieReasons::clauseOf(const movie::MovieError& error) {
  return QString::fromStdString(error.clause().text(translated));
}
