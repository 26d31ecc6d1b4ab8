#include "tools/manual/TextBlock.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QTextCursor>
#include <algorithm>
#include <utility>

namespace manual {

namespace {

/// "saving.md#refusals" in the file "check.md" is "#saving.md#refusals", "#words" is "#check.md#words".
QString targetOf(const QString& href, const QString& base) {
  if (href.contains(QLatin1String("://"))) return href;
  return u'#' + (href.startsWith(u'#') ? base + href : href);
}

}  // namespace

TextBlock::TextBlock(QPaintDevice& device, TextStyle style)
    : style_(std::move(style)), text_(std::make_unique<QTextDocument>()) {
  text_->setDocumentMargin(0);
  text_->setDefaultFont(style_.font);
  text_->setUndoRedoEnabled(false);
  text_->documentLayout()->setPaintDevice(&device);
  QTextBlockFormat lines;
  lines.setAlignment(style_.alignment);
  lines.setLineHeight(style_.lineHeight, QTextBlockFormat::ProportionalHeight);
  QTextCursor(text_.get()).setBlockFormat(lines);
}

QTextCharFormat TextBlock::formatLike(const QTextCharFormat& given, const QString& base) const {
  QFont font = style_.font;
  if (given.fontFixedPitch()) font = codeFont(font.pointSizeF() * codeSize / bodySize);
  if (given.fontWeight() > QFont::Medium) font.setBold(true);
  QTextCharFormat format = charFormat(font, style_.color);
  if (!given.isAnchor()) return format;
  format.setAnchor(true);
  format.setAnchorHref(targetOf(given.anchorHref(), base));
  format.setForeground(linkInk);
  return format;
}

void TextBlock::append(const QTextBlock& block, const QString& base) {
  QTextCursor end(text_.get());
  end.movePosition(QTextCursor::End);
  for (auto each = block.begin(); !each.atEnd(); ++each) {
    const QTextFragment fragment = each.fragment();
    end.insertText(fragment.text(), formatLike(fragment.charFormat(), base));
  }
}

void TextBlock::append(const QString& text, const QString& anchor) {
  QTextCursor end(text_.get());
  end.movePosition(QTextCursor::End);
  QTextCharFormat format = charFormat(style_.font, style_.color);
  if (!anchor.isEmpty()) {
    format.setAnchor(true);
    format.setAnchorHref(u'#' + anchor);
  }
  end.insertText(text, format);
}

void TextBlock::appendLineBreak() {
  append(QString(QChar::LineSeparator));
}

void TextBlock::setWidth(double width) {
  text_->setTextWidth(width);
}

double TextBlock::height() const {
  return text_->size().height();
}

double TextBlock::idealWidth() const {
  text_->setTextWidth(-1);
  return text_->idealWidth();
}

double TextBlock::smallestWidth() const {
  text_->setTextWidth(1);
  return text_->idealWidth();
}

void TextBlock::draw(QPainter& painter, double x, double y) const {
  painter.save();
  painter.translate(x, y);
  QAbstractTextDocumentLayout::PaintContext context;
  context.palette.setColor(QPalette::Text, style_.color);
  text_->documentLayout()->draw(&painter, context);
  painter.restore();
}

}  // namespace manual
