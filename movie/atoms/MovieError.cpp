#include "movie/atoms/MovieError.h"

namespace movie {

std::string MovieError::message() const {
  std::string text = file.empty() ? "Cannot read the movie: " : "Cannot read \"" + file + "\": ";
  text += reason;
  if (!atom.empty()) text += " (atom " + atom + " at offset " + std::to_string(offset) + ")";
  return text + ".";
}

}  // namespace movie
