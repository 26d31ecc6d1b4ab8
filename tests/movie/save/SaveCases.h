#pragma once

#include <string>
#include <vector>

#include "movie/atoms/MovieEdit.h"
#include "movie/save/SavePlacement.h"

namespace movie::test {

/// A movie file and an edit of it, laid out so that a save takes one particular way.
struct SaveCase {
  std::string name;
  Bytes file;
  Bytes movie;  ///< the movie atom in it that counts
  std::vector<SampleDescriptionEdit> edits;
  SavePlace place = SavePlace::Tail;  ///< where the edited movie atom is to go
};

/// Every way that there is, with `padding` bytes (0, or 8 and more) in a `free` at the front, so that atoms meet
/// sector borders in different places. `bulk` bytes of the movie atom are none of a save's business.
std::vector<SaveCase> saveCases(std::size_t padding, std::size_t bulk = 1100);

}  // namespace movie::test
