#include "tools/manual/Pagination.h"

namespace manual {

namespace {

class Paginator {
 public:
  Paginator(const Flow& flow, double height) : flow_(flow), height_(height) {}

  Pagination fill() {
    for (std::size_t i = 0; i < flow_.size(); ++i) {
      if (made_.pages.empty() || flow_[i].startsPage || !mayFollow(i)) startPage(flow_[i]);
      place(flow_[i]);
    }
    return std::move(made_);
  }

 private:
  /// What stands with the box before it was counted there, unless all of it is more than a page.
  bool mayFollow(std::size_t i) const {
    if (i > 0 && flow_[i - 1].keepWithNext) return y_ + flow_[i].spaceBefore + flow_[i].height <= height_;
    return fits(i);
  }

  /// The box, with what it has to be on one page with.
  bool fits(std::size_t first) const {
    double bottom = y_;
    for (std::size_t i = first; i < flow_.size(); ++i) {
      bottom += (bottom > 0 ? flow_[i].spaceBefore : 0) + flow_[i].height;
      if (!flow_[i].keepWithNext) break;
    }
    return bottom <= height_;
  }

  void startPage(const Box& first) {
    made_.pages.emplace_back();
    y_ = 0;
    if (first.header) place(*first.header);
  }

  void place(const Box& box) {
    if (y_ > 0) y_ += box.spaceBefore;
    made_.pages.back().push_back({&box, y_});
    if (box.headingLevel > 0) made_.headings.push_back({&box, static_cast<int>(made_.pages.size()) - 1, y_});
    y_ += box.height;
  }

  const Flow& flow_;
  double height_, y_ = 0;
  Pagination made_;
};

}  // namespace

Pagination paginate(const Flow& flow, double height) {
  return Paginator(flow, height).fill();
}

std::map<QString, PlacedHeading> anchorsOf(const Pagination& pagination) {
  std::map<QString, PlacedHeading> anchors;
  for (const PlacedHeading& heading : pagination.headings) {
    anchors.emplace(heading.box->anchor.section(u'#', 0, 0), heading);
    anchors.emplace(heading.box->anchor, heading);
  }
  return anchors;
}

}  // namespace manual
