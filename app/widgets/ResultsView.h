#pragma once

#include <QTextEdit>

#include "check/Report.h"

/// The results console's text view: read-only, selectable, black and red on white in every theme.
class ResultsView : public QTextEdit {
  Q_OBJECT

 public:
  explicit ResultsView(QWidget* parent = nullptr);

  void clearText();
  /// Appends a paragraph in its style, one blank line after what is there, and scrolls to it.
  void append(const check::ReportParagraph& paragraph);

 protected:
  void resizeEvent(QResizeEvent* event) override;  ///< the end stays in sight
};

/// Writes reports into a results view; paragraphs from other threads go through the main thread and wait for it.
class ViewConsole final : public check::ReportConsole {
 public:
  explicit ViewConsole(ResultsView& view) : view_(view) {}
  void clearTextView() override;

 protected:
  void append(const check::ReportParagraph& paragraph) override;

 private:
  ResultsView& view_;
};
