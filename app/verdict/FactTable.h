#pragma once

#include <QTableWidget>

#include "app/verdict/Verdict.h"

/// Source and destination, a row each, and their properties. What differs is bold, on a ground of its own, and has a
/// sign before it. Read cell by cell by screen readers.
class FactTable : public QTableWidget {
  Q_OBJECT

 public:
  explicit FactTable(QWidget* parent = nullptr);
  void setFacts(const QList<Fact>& facts, bool hold);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 protected:
  void changeEvent(QEvent* event) override;  ///< another theme
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void setCell(int row, int column, const Fact& fact);

  QList<Fact> facts_;
  bool hold_ = true;
};
