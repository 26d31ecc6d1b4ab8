#pragma once

#include <QString>
#include <vector>

namespace check {

/// The four styles of the results console.
enum class ReportStyle { Normal, Bold, Error, BoldError };

struct ReportParagraph {
  QString text;
  ReportStyle style = ReportStyle::Normal;
  friend bool operator==(const ReportParagraph&, const ReportParagraph&) = default;
};

/// Where a check writes its report: the window's console, the terminal. Called on the thread that runs the check.
class ReportConsole {
 public:
  virtual ~ReportConsole() = default;
  virtual void clearTextView() = 0;

  // Each also writes the text to the application log, the text itself being the log's format.
  void outputText(const QString& text);
  void outputBoldText(const QString& text);
  void outputErrorText(const QString& text);
  void outputBoldErrorText(const QString& text);

 protected:
  virtual void append(const ReportParagraph& paragraph) = 0;

 private:
  void output(const ReportParagraph& paragraph);
};

}  // namespace check
