#include "app/widgets/ResultsView.h"

#include <QFontDatabase>
#include <QScrollBar>
#include <QTextCursor>

#include "SharedFiles/foundation/MainThread.h"

namespace {

constexpr qreal fontSize = 12.0;  // points

QTextCharFormat formatOf(check::ReportStyle style) {
  const bool error = style == check::ReportStyle::Error || style == check::ReportStyle::BoldError;
  const bool bold = style == check::ReportStyle::Bold || style == check::ReportStyle::BoldError;
  QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  font.setPointSizeF(fontSize);
  font.setBold(bold);
  QTextCharFormat format;
  format.setFont(font);
  format.setForeground(error ? Qt::red : Qt::black);
  return format;
}

}  // namespace

ResultsView::ResultsView(QWidget* parent) : QTextEdit(parent) {
  setReadOnly(true);
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  setUndoRedoEnabled(false);
  setTabChangesFocus(true);
  QPalette colors = palette();
  colors.setColor(QPalette::Base, Qt::white);
  colors.setColor(QPalette::Text, Qt::black);
  setPalette(colors);
}

void ResultsView::clearText() {
  setPlainText(QString());
}

void ResultsView::append(const check::ReportParagraph& paragraph) {
  setReadOnly(false);
  QTextCursor end(document());
  end.movePosition(QTextCursor::End);
  const QString separator = document()->characterCount() > 1 ? check::reportSeparator : QString();
  end.insertText(separator + paragraph.text, formatOf(paragraph.style));
  setTextCursor(end);
  verticalScrollBar()->setValue(verticalScrollBar()->maximum());
  setReadOnly(true);
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

void ResultsView::resizeEvent(QResizeEvent* event) {
  const bool atEnd = verticalScrollBar()->value() == verticalScrollBar()->maximum();
  QTextEdit::resizeEvent(event);
  if (atEnd) verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void ViewConsole::clearTextView() {
  MainThread::performAndWait([this] { view_.clearText(); });
}

void ViewConsole::append(const check::ReportParagraph& paragraph) {
  MainThread::performAndWait([&] { view_.append(paragraph); });
}
