#pragma once

#include <QString>
#include <vector>

namespace check {

/// The four styles of the results console: an error is red, else black; bold is the weight.
enum class ReportStyle { Normal, Bold, Error, BoldError };

struct ReportParagraph {
  QString text;
  ReportStyle style = ReportStyle::Normal;
  friend bool operator==(const ReportParagraph&, const ReportParagraph&) = default;
};

/// What stands between two paragraphs of a report: one blank line.
inline const QString reportSeparator = QStringLiteral("\n\n");

/// Where a check writes its report: the window's console, the terminal. Called on the thread that runs the check.
class ReportConsole {
 public:
  virtual ~ReportConsole() = default;
  virtual void clearTextView() = 0;

  // Each also writes the text to the application log, the text itself being the log's format.
  void outputText(const QString& text) { output({text, ReportStyle::Normal}); }              ///< outputText:
  void outputBoldText(const QString& text) { output({text, ReportStyle::Bold}); }            ///< outputBoldText:
  void outputErrorText(const QString& text) { output({text, ReportStyle::Error}); }          ///< outputErrorText:
  void outputBoldErrorText(const QString& text) { output({text, ReportStyle::BoldError}); }  ///< outputBoldErrorText:

 protected:
  virtual void append(const ReportParagraph& paragraph) = 0;

 private:
  void output(const ReportParagraph& paragraph);
};

/// A console that keeps its paragraphs.
class RecordedReport final : public ReportConsole {
 public:
  void clearTextView() override { paragraphs_.clear(); }
  const std::vector<ReportParagraph>& paragraphs() const { return paragraphs_; }

 protected:
  void append(const ReportParagraph& paragraph) override { paragraphs_.push_back(paragraph); }

 private:
  std::vector<ReportParagraph> paragraphs_;
};

}  // namespace check
