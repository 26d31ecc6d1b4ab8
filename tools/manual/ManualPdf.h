#pragma once

#include <QStringList>

#include "tools/manual/Pagination.h"
#include "tools/manual/PdfNavigation.h"

class QPainter;
class QPdfWriter;

namespace manual {

/// Draws the title page, the table of contents and the pages of a flow.
class ManualPdf {
 public:
  /// `version` stands on the title page.
  ManualPdf(QPdfWriter& writer, const Flow& flow, QString version);

  void draw();

  /// What links lead to, for the file once it is written.
  Navigation navigation() const;

 private:
  struct ContentsLine {
    const PlacedHeading* heading = nullptr;
    double top = 0;
    int page = 0;  ///< of the contents
  };

  void layOutContents();
  void drawTitlePage(QPainter& painter) const;
  void drawContents(QPainter& painter);
  void drawContentsLine(QPainter& painter, const ContentsLine& line) const;
  void drawPage(QPainter& painter, std::size_t index) const;
  void drawRunningTexts(QPainter& painter, std::size_t index) const;
  QString chapterOf(std::size_t page) const;
  int numberOf(int page) const { return 2 + contentsPages_ + page; }  ///< printed, of a page of the flow

  QPdfWriter& writer_;
  QString version_;
  Pagination pagination_;
  std::vector<ContentsLine> contents_;
  int contentsPages_ = 0;
};

}  // namespace manual
