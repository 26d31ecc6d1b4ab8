#include "tools/manual/MarkdownFlow.h"

#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextList>
#include <QTextTable>
#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "tools/manual/TableColumns.h"
#include "tools/manual/TextBlock.h"

namespace manual {

namespace {

constexpr double paragraphSpace = dots(2.4), itemSpace = dots(1.1), codeSpace = dots(3), figureSpace = dots(4.5);
constexpr double itemIndent = dots(6), noteIndent = dots(5), padding = dots(2.2), barWidth = dots(0.9);
constexpr double cellPadding = dots(1.5), rowPadding = dots(1.05);
constexpr double dotsAPoint = dots(0.19);  // of a picture's, which has two pixels for each
constexpr double highestPicture = dots(150);

std::shared_ptr<TextBlock> textOf(QPaintDevice& device, const TextStyle& style, const QTextBlock& block,
                                  const QString& base, double width) {
  auto text = std::make_shared<TextBlock>(device, style);
  text->append(block, base);
  text->setWidth(width);
  return text;
}

bool isCode(const QTextBlock& block) {
  return block.blockFormat().hasProperty(QTextFormat::BlockCodeFence);
}

/// The picture of a block that holds nothing else.
std::optional<QTextImageFormat> pictureOf(const QTextBlock& block) {
  constexpr int pictureAndEnd = 2;
  if (block.begin().atEnd() || block.length() != pictureAndEnd) return std::nullopt;
  const QTextCharFormat format = block.begin().fragment().charFormat();
  return format.isImageFormat() ? std::optional(format.toImageFormat()) : std::nullopt;
}

/// A paragraph that leads to what follows it.
bool announces(const QTextBlock& block) {
  return block.text().endsWith(u':');
}

}  // namespace

void MarkdownFlow::append(const QString& name, const QString& markdown) {
  file_ = name;
  QTextDocument document;
  document.setMarkdown(markdown, QTextDocument::MarkdownDialectGitHub);
  const qsizetype first = static_cast<qsizetype>(boxes_.size());
  for (auto each = document.rootFrame()->begin(); !each.atEnd(); ++each) {
    if (const auto* table = qobject_cast<const QTextTable*>(each.currentFrame())) {
      appendCode();
      appendTable(*table);
    } else if (each.currentBlock().isValid()) {
      appendBlock(each.currentBlock());
    }
  }
  appendCode();
  if (static_cast<qsizetype>(boxes_.size()) > first) boxes_[static_cast<std::size_t>(first)].startsPage = true;
}

void MarkdownFlow::appendBlock(const QTextBlock& block) {
  if (isCode(block)) {
    code_ << block.text();
    return;
  }
  appendCode();
  if (const auto picture = pictureOf(block)) {
    appendFigure(picture->name(), picture->stringProperty(QTextFormat::ImageAltText));
  } else if (block.text().isEmpty()) {
    return;
  } else if (block.blockFormat().headingLevel() > 0) {
    appendHeading(block);
  } else if (block.blockFormat().intProperty(QTextFormat::BlockQuoteLevel) > 0) {
    appendNote(block);
  } else if (block.textList() != nullptr) {
    appendListItem(block);
  } else {
    appendParagraph(block);
  }
}

QString MarkdownFlow::anchorOf(const QString& title) const {
  static const QRegularExpression unusable(QStringLiteral("[^a-z0-9 -]"));
  return file_ + u'#' + title.toLower().remove(unusable).replace(u' ', u'-');
}

void MarkdownFlow::appendHeading(const QTextBlock& block) {
  const int level = std::min(block.blockFormat().headingLevel(), highestHeading);
  const TextStyle style{textFont(headingSize(level), Weight::Bold), level == 1 ? accent : ink, Qt::AlignLeft, 115};
  const auto text = textOf(device_, style, block, file_, textWidth);
  const double spaceAfter = level == 1 ? dots(4) : dots(0.6);
  Box box;
  box.height = text->height() + spaceAfter;
  box.spaceBefore = level == 2 ? dots(7) : dots(5);
  box.keepWithNext = true;
  box.draw = [text](QPainter& painter) { text->draw(painter, 0, 0); };
  box.headingLevel = level;
  box.title = block.text();
  box.anchor = anchorOf(box.title);
  boxes_.push_back(std::move(box));
}

void MarkdownFlow::appendParagraph(const QTextBlock& block) {
  const auto text = textOf(device_, {}, block, file_, textWidth);
  Box box;
  box.height = text->height();
  box.spaceBefore = paragraphSpace;
  box.keepWithNext = announces(block);
  box.draw = [text](QPainter& painter) { text->draw(painter, 0, 0); };
  boxes_.push_back(std::move(box));
}

void MarkdownFlow::appendNote(const QTextBlock& block) {
  const auto text = textOf(device_, {}, block, file_, textWidth - noteIndent - padding);
  const double height = text->height() + 2 * padding;
  Box box;
  box.height = height;
  box.spaceBefore = codeSpace;
  box.draw = [text, height](QPainter& painter) {
    painter.fillRect(QRectF(0, 0, textWidth, height), groundOfNotes);
    painter.fillRect(QRectF(0, 0, barWidth, height), accent);
    text->draw(painter, noteIndent, padding);
  };
  boxes_.push_back(std::move(box));
}

void MarkdownFlow::appendListItem(const QTextBlock& block) {
  const QTextList& list = *block.textList();
  const double indent = itemIndent * std::max(list.format().indent(), 1);
  const auto text = textOf(device_, {}, block, file_, textWidth - indent);
  const auto mark = std::make_shared<TextBlock>(device_, TextStyle{});
  const bool numbered = list.format().style() == QTextListFormat::ListDecimal;
  mark->append(numbered ? QString::number(list.itemNumber(block) + 1) + u'.' : QStringLiteral("•"));
  mark->setWidth(itemIndent);
  Box box;
  box.height = text->height();
  box.spaceBefore = list.itemNumber(block) == 0 ? paragraphSpace : itemSpace;
  box.keepWithNext = announces(block);
  box.draw = [text, mark, indent](QPainter& painter) {
    mark->draw(painter, indent - itemIndent + dots(0.8), 0);
    text->draw(painter, indent, 0);
  };
  boxes_.push_back(std::move(box));
}

void MarkdownFlow::appendCode() {
  if (code_.isEmpty()) return;
  const QStringList lines = std::exchange(code_, {});
  const auto text = std::make_shared<TextBlock>(device_, TextStyle{codeFont(codeSize), ink, Qt::AlignLeft, 125});
  text->append(lines.join(QChar::LineSeparator));
  text->setWidth(textWidth - 2 * padding);
  const double height = text->height() + 2 * padding;
  Box box;
  box.height = height;
  box.spaceBefore = codeSpace;
  box.draw = [text, height](QPainter& painter) {
    painter.fillRect(QRectF(0, 0, textWidth, height), groundOfCode);
    text->draw(painter, padding, padding);
  };
  boxes_.push_back(std::move(box));
}

void MarkdownFlow::appendFigure(const QString& name, const QString& caption) {
  const QImage picture(pictures_.filePath(name.section(u'/', -1)));
  if (picture.isNull()) {
    problems_ << file_ + QStringLiteral(": there is no picture ") + name;
    return;
  }
  QSizeF size(QSizeF(picture.size()) / 2 * dotsAPoint);
  if (size.width() > textWidth || size.height() > highestPicture) {
    size.scale(textWidth, highestPicture, Qt::KeepAspectRatio);
  }
  const auto text =
      std::make_shared<TextBlock>(device_, TextStyle{textFont(captionSize), faintInk, Qt::AlignHCenter, 130});
  text->append(QStringLiteral("Figure %1. %2").arg(++figures_).arg(caption));
  text->setWidth(textWidth);
  const double captionTop = size.height() + dots(1.8);
  Box box;
  box.height = captionTop + text->height() + dots(1.5);
  box.spaceBefore = figureSpace;
  box.draw = [picture, size, text, captionTop](QPainter& painter) {
    const QRectF place(QPointF((textWidth - size.width()) / 2, 0), size);
    painter.drawImage(place, picture);
    painter.setPen(QPen(ruleColor, dots(0.15)));
    painter.drawRect(place);
    text->draw(painter, 0, captionTop);
  };
  boxes_.push_back(std::move(box));
}

void MarkdownFlow::appendTable(const QTextTable& table) {
  TableColumns columns(textWidth, 2 * cellPadding);
  for (int row = 0; row < table.rows(); ++row) {
    for (int column = 0; column < table.columns(); ++column) {
      TextBlock text(device_, {textFont(cellSize, row == 0 ? Weight::Bold : Weight::Normal)});
      text.append(table.cellAt(row, column).firstCursorPosition().block(), file_);
      columns.count(column, std::ceil(text.smallestWidth()), std::ceil(text.idealWidth()));
    }
  }
  const std::vector<double> widths = columns.widths();
  auto header = std::make_shared<Box>(tableRow(table, 0, widths));
  header->keepWithNext = true;
  header->spaceBefore = codeSpace;
  boxes_.push_back(*header);
  for (int row = 1; row < table.rows(); ++row) {
    boxes_.push_back(tableRow(table, row, widths));
    boxes_.back().header = header;
    // No row stands alone, neither at the foot of a page nor on top of the next.
    boxes_.back().keepWithNext = row + 1 < table.rows() && (row == 1 || row + 2 == table.rows());
  }
}

Box MarkdownFlow::tableRow(const QTextTable& table, int row, const std::vector<double>& widths) {
  const bool isHeader = row == 0;
  const TextStyle style{textFont(cellSize, isHeader ? Weight::Bold : Weight::Normal), ink, Qt::AlignLeft, 128};
  std::vector<std::shared_ptr<TextBlock>> cells;
  double height = 0;
  for (int column = 0; column < table.columns(); ++column) {
    const double width = widths[static_cast<std::size_t>(column)] - 2 * cellPadding;
    cells.push_back(textOf(device_, style, table.cellAt(row, column).firstCursorPosition().block(), file_, width));
    height = std::max(height, cells.back()->height() + 2 * rowPadding);
  }
  Box box;
  box.height = height;
  box.draw = [cells, widths, height, isHeader](QPainter& painter) {
    if (isHeader) painter.fillRect(QRectF(0, 0, textWidth, height), groundOfNotes);
    painter.setPen(QPen(isHeader ? accent : ruleColor, dots(isHeader ? 0.3 : 0.15)));
    painter.drawLine(QLineF(0, height, textWidth, height));
    double x = cellPadding;
    for (std::size_t i = 0; i < cells.size(); x += widths[i++]) cells[i]->draw(painter, x, rowPadding);
  };
  return box;
}

}  // namespace manual
