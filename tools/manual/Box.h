#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <vector>

class QPainter;

namespace manual {

/// A piece of the flow that is never cut: a paragraph, a heading, a row of a table, a figure with its caption. Measures
/// are dots.
struct Box {
  double height = 0;
  double spaceBefore = 0;     ///< not at the top of a page
  bool keepWithNext = false;  ///< stands on the page of the box that follows
  bool startsPage = false;
  std::function<void(QPainter&)> draw;  ///< with the text column's left edge and the box's top as the origin

  int headingLevel = 0;  ///< 1 to 3, or 0 when it is no heading
  QString title;         ///< of a heading, plain
  QString anchor;        ///< what links name a heading by: "file#words-of-the-title"; the first of a file also "file"

  std::shared_ptr<const Box> header;  ///< the row of titles that is repeated where a page begins with this row
};

using Flow = std::vector<Box>;

}  // namespace manual
