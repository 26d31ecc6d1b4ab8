#pragma once

#include <map>
#include <vector>

#include "tools/manual/Box.h"

namespace manual {

/// A box on a page; dots from the top of the text column.
struct PlacedBox {
  const Box* box = nullptr;
  double top = 0;
};

using Page = std::vector<PlacedBox>;

/// Where a heading stands. Pages count from 0 at the first page of the flow.
struct PlacedHeading {
  const Box* box = nullptr;
  int page = 0;
  double top = 0;
};

struct Pagination {
  std::vector<Page> pages;
  std::vector<PlacedHeading> headings;
};

/// Fills pages of the height: no box is cut, what keeps with the next stands with it, a table that goes on repeats its
/// titles. The boxes outlive the result.
Pagination paginate(const Flow& flow, double height);

/// What links name the headings by, and the headings. A file's own name leads to its first heading.
std::map<QString, PlacedHeading> anchorsOf(const Pagination& pagination);

}  // namespace manual
