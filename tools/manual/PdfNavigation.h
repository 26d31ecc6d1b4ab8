#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <map>
#include <vector>

namespace manual {

/// A place in a PDF: the page from 0, and how high on it, in points from its foot.
struct Destination {
  int page = 0;
  double top = 0;
};

struct OutlineEntry {
  QString title;
  int level = 1;  ///< 1 or 2; the first entry is of level 1
  Destination destination;
};

struct Navigation {
  std::map<QString, Destination> anchors;
  std::vector<OutlineEntry> outline;
};

/// What Qt cannot write into a PDF itself: links to places in it, the outline beside it, its language, and a date that
/// is not that of the moment. Works on the bytes of a file by QPdfWriter, as an incremental update. Source: ISO
/// 32000-1, 7.5.6 Incremental Updates, 12.3 Document-Level Navigation.
class PdfNavigation {
 public:
  explicit PdfNavigation(QByteArray pdf);

  /// Makes links to "#anchor" lead there, and adds the outline.
  void add(const Navigation& navigation);
  void setCreationDate(const QDateTime& date);

  QByteArray bytes() const { return pdf_; }
  /// Links that lead nowhere, and what is missing in the file.
  const QStringList& problems() const { return problems_; }

 private:
  struct Change {
    int number = 0;
    QByteArray object;
  };

  void readTable();
  QByteArray objectAt(int number) const;
  void retargetLinks(const std::map<QString, Destination>& anchors);
  void addOutline(const std::vector<OutlineEntry>& outline);
  QByteArray placeText(const Destination& destination) const;
  void writeChanges();

  QByteArray pdf_;
  std::vector<qsizetype> offsets_;  ///< of the objects, by their numbers
  qsizetype tableAt_ = 0;
  int catalog_ = 0, info_ = 0;
  std::vector<int> pages_;
  std::vector<Change> changes_;
  QStringList problems_;
};

}  // namespace manual
