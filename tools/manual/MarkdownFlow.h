#pragma once

#include <QDir>
#include <QStringList>

#include "tools/manual/Box.h"

class QPaintDevice;
class QTextBlock;
class QTextDocument;
class QTextTable;

namespace manual {

/// Turns files of Markdown into boxes. What is understood: headings, paragraphs, notes (block quotes), lists, code,
/// tables, and pictures that stand alone, whose text is their caption.
class MarkdownFlow {
 public:
  /// `device` measures texts and outlives the boxes. Pictures are found under `pictures` by their file name.
  MarkdownFlow(QPaintDevice& device, const QDir& pictures) : device_(device), pictures_(pictures) {}

  /// `name` is how links call the file. A file starts a page.
  void append(const QString& name, const QString& markdown);

  const Flow& boxes() const { return boxes_; }
  /// What is wrong with the files: pictures that cannot be had.
  const QStringList& problems() const { return problems_; }

 private:
  void appendBlock(const QTextBlock& block);
  void appendHeading(const QTextBlock& block);
  void appendParagraph(const QTextBlock& block);
  void appendNote(const QTextBlock& block);
  void appendListItem(const QTextBlock& block);
  void appendFigure(const QString& name, const QString& caption);
  void appendCode();
  void appendTable(const QTextTable& table);
  Box tableRow(const QTextTable& table, int row, const std::vector<double>& widths);
  QString anchorOf(const QString& title) const;

  QPaintDevice& device_;
  QDir pictures_;
  QString file_;      ///< that is being read
  QStringList code_;  ///< lines of the code that is being read
  int figures_ = 0;
  Flow boxes_;
  QStringList problems_;
};

}  // namespace manual
