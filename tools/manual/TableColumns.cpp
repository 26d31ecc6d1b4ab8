#include "tools/manual/TableColumns.h"

#include <algorithm>
#include <numeric>

namespace manual {

void TableColumns::count(int column, double smallest, double ideal) {
  const auto index = static_cast<std::size_t>(column);
  if (columns_.size() <= index) columns_.resize(index + 1);
  Column& wide = columns_[index];
  wide.smallest = std::max(wide.smallest, smallest + around_);
  wide.ideal = std::max(wide.ideal, ideal + around_);
}

/// Columns of short texts stand on one line, where the others then have room for their words.
bool TableColumns::isShort(const Column& column) const {
  constexpr double shortShare = 0.25;
  return column.ideal <= width_ * shortShare;
}

std::vector<double> TableColumns::widths() const {
  std::vector<Column> columns = columns_;
  for (Column& column : columns) {
    if (isShort(column)) column.smallest = column.ideal;
  }
  const auto needed = [](const std::vector<Column>& all) {
    return std::accumulate(all.begin(), all.end(), 0.0,
                           [](double sum, const Column& each) { return sum + each.smallest; });
  };
  if (needed(columns) > width_) columns = columns_;
  const double left = std::max(width_ - needed(columns), 0.0);

  // A very long text wishes for no more than a few lines' worth: else it would starve the others.
  constexpr double longest = 1.5;
  std::vector<double> wishes;
  wishes.reserve(columns.size());
  for (const Column& column : columns) {
    wishes.push_back(std::max(std::min(column.ideal, width_ * longest) - column.smallest, 0.0));
  }
  const double wanted = std::accumulate(wishes.begin(), wishes.end(), 0.0);
  std::vector<double> widths;
  widths.reserve(columns.size());
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const double share = wanted > 0 ? wishes[i] / wanted : 1 / static_cast<double>(columns.size());
    widths.push_back(columns[i].smallest + left * share);
  }
  return widths;
}

}  // namespace manual
