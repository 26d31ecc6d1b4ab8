#pragma once

#include <string>

#include <tl/expected.hpp>

#include "diagnosis/Causes.h"

namespace diagnosis {

/// Filters of ffmpeg, separated by commas.
struct UndoFilter {
  std::string text;
  bool canBeTimed = false;  ///< whether the filters that change anything take `enable`
};

/// What both sides say of their colours, and what they were compared in.
struct UndoSides {
  const SideTags& source;
  const SideTags& dest;
  ComparedIn space;
};

/// The filters that undo a recipe on the destination as ffmpeg decodes it: in its codes, its range and its depth, in
/// the reverse order of what was done. `enable`: an expression that says when, such as between(t,1,2); empty for
/// always. Error: a sentence that says why it cannot be undone.
tl::expected<UndoFilter, std::string> undoFilter(const Recipe& recipe, const UndoSides& sides,
                                                 const std::string& enable);

}  // namespace diagnosis
