#pragma once

#include <vector>

namespace manual {

/// The widths of a table's columns that fill a width together: a column is never narrower than its longest word while
/// there is room, short columns stay on one line, and long ones share what is left.
class TableColumns {
 public:
  /// `around` is the padding of a cell, left and right together.
  TableColumns(double width, double around) : width_(width), around_(around) {}

  /// A cell's text: as narrow as it can be, and on one line.
  void count(int column, double smallest, double ideal);
  std::vector<double> widths() const;

 private:
  struct Column {
    double smallest = 0, ideal = 0;
  };

  bool isShort(const Column& column) const;

  double width_, around_;
  std::vector<Column> columns_;
};

}  // namespace manual
