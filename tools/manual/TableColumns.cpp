#include "tools/manual/TableColumns.h"

#include <algorithm>

namespace manual {

void TableColumns::count(int column, double smallest, double ideal) {
  const auto index = static_cast<std::size_t>(column);
  if (columns_.size() <= index) columns_.resize(index + 1);
  Column& wide = columns_[index];
  wide.smallest = std::max(wide.smallest, smallest + around_);
  wide.ideal = std::max(wide.ideal, ideal + around_);
}

std::vector<double> TableColumns::widths() const {
  double needed = 0, wanted = 0;
  std::vector<double> wishes;
  // A very long text wishes for no more than a few lines' worth: else it would starve the others.
  for (const Column& column : columns_) {
    const double wish = std::max(column.smallest, std::min(column.ideal, width_ * 1.5));
    wishes.push_back(wish - column.smallest);
    needed += column.smallest;
    wanted += wishes.back();
  }
  const double left = std::max(width_ - needed, 0.0);
  std::vector<double> widths;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const double share = wanted > 0 ? left * wishes[i] / wanted : left / static_cast<double>(columns_.size());
    widths.push_back(columns_[i].smallest + share);
  }
  return widths;
}

}  // namespace manual
