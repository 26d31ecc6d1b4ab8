#pragma once

#include <QTextBlock>
#include <QTextDocument>
#include <memory>

#include "tools/manual/Typography.h"

class QPainter;

namespace manual {

/// What a run of text looks like; code and links inside it follow from it.
struct TextStyle {
  QFont font = textFont(bodySize);
  QColor color = ink;
  Qt::Alignment alignment = Qt::AlignLeft;
  double lineHeight = 138;  ///< percent of the font's own
};

/// A few lines of text, laid out at a width. Drawn links become links of the PDF.
class TextBlock {
 public:
  /// `device` measures; it outlives the text.
  TextBlock(QPaintDevice& device, TextStyle style);

  /// The words of a block of Markdown, in this style: bold, code and links are kept. `base` is the file that links
  /// start from: they become "#file#words".
  void append(const QTextBlock& block, const QString& base);
  void append(const QString& text, const QString& anchor = {});
  void appendLineBreak();

  void setWidth(double width);
  double height() const;
  double idealWidth() const;     ///< on one line
  double smallestWidth() const;  ///< of the longest word
  void draw(QPainter& painter, double x, double y) const;

 private:
  QTextCharFormat formatLike(const QTextCharFormat& given, const QString& base) const;

  TextStyle style_;
  std::unique_ptr<QTextDocument> text_;
};

}  // namespace manual
