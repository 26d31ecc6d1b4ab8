#include "tools/manual/PdfNavigation.h"

#include <QRegularExpression>
#include <algorithm>
#include <utility>

namespace manual {

namespace {

int numberAfter(const QByteArray& text, const char* words) {
  const QRegularExpression expression(QRegularExpression::escape(QLatin1String(words)) + QStringLiteral("\\s+(\\d+)"));
  const auto found = expression.match(QString::fromLatin1(text));
  return found.hasMatch() ? found.captured(1).toInt() : 0;
}

/// A text of any letters: UTF-16 with a mark, in hexadecimal.
QByteArray textString(const QString& text) {
  QByteArray words = "<FEFF";
  for (const QChar letter : text) words += QByteArray::number(letter.unicode(), 16).rightJustified(4, '0').toUpper();
  return words + '>';
}

QByteArray reference(int number) {
  return QByteArray::number(number) + " 0 R";
}

/// An entry's place among its own.
struct Relatives {
  int parent = -1, previous = -1, next = -1, firstChild = -1, lastChild = -1, children = 0;
};

std::vector<Relatives> relativesOf(const std::vector<OutlineEntry>& outline) {
  std::vector<Relatives> found(outline.size());
  int chapter = -1, section = -1;
  for (int i = 0; i < static_cast<int>(outline.size()); ++i) {
    Relatives& own = found[static_cast<std::size_t>(i)];
    const bool isChapter = outline[static_cast<std::size_t>(i)].level == 1;
    int& before = isChapter ? chapter : section;
    if (!isChapter && chapter >= 0) {
      Relatives& parent = found[static_cast<std::size_t>(chapter)];
      own.parent = chapter;
      if (parent.firstChild < 0) parent.firstChild = i;
      parent.lastChild = i;
      ++parent.children;
    }
    own.previous = before;
    if (before >= 0) found[static_cast<std::size_t>(before)].next = i;
    before = i;
    if (isChapter) section = -1;
  }
  return found;
}

}  // namespace

PdfNavigation::PdfNavigation(QByteArray pdf) : pdf_(std::move(pdf)) {
  readTable();
}

void PdfNavigation::readTable() {
  const QByteArray tail = pdf_.mid(pdf_.lastIndexOf("trailer"));
  tableAt_ = numberAfter(tail, "startxref");
  catalog_ = numberAfter(tail, "/Root");
  info_ = numberAfter(tail, "/Info");
  const QList<QByteArray> lines = pdf_.mid(tableAt_).split('\n');
  const int count = numberAfter(tail, "/Size");
  for (int i = 0; i < count && i + 2 < lines.size(); ++i) offsets_.push_back(lines[i + 2].left(10).toLongLong());
  const QByteArray all = objectAt(numberAfter(objectAt(catalog_), "/Pages"));
  const qsizetype first = all.indexOf('[') + 1;
  for (const QByteArray& kid : all.mid(first, all.indexOf(']') - first).split('R')) {
    if (const int page = kid.trimmed().split(' ').first().toInt(); page > 0) pages_.push_back(page);
  }
  if (catalog_ == 0 || info_ == 0 || pages_.empty()) problems_ << QStringLiteral("The PDF is not built as expected.");
}

QByteArray PdfNavigation::objectAt(int number) const {
  if (number <= 0 || static_cast<std::size_t>(number) >= offsets_.size()) return {};
  const qsizetype begin = pdf_.indexOf("obj", offsets_[static_cast<std::size_t>(number)]) + 4;
  return pdf_.mid(begin, pdf_.indexOf("endobj", begin) - begin).trimmed();
}

QByteArray PdfNavigation::placeText(const Destination& destination) const {
  const std::size_t page = std::min(static_cast<std::size_t>(destination.page), pages_.size() - 1);
  return '[' + reference(pages_[page]) + " /XYZ null " + QByteArray::number(destination.top, 'f', 1) + " null]";
}

void PdfNavigation::add(const Navigation& navigation) {
  if (!problems_.isEmpty()) return;
  retargetLinks(navigation.anchors);
  if (!navigation.outline.empty()) addOutline(navigation.outline);
  writeChanges();
}

void PdfNavigation::retargetLinks(const std::map<QString, Destination>& anchors) {
  static const QRegularExpression link(QStringLiteral("/Subtype /Link\\s+(/Rect \\[[^\\]]*\\]).*/URI \\(#([^)]*)\\)"),
                                       QRegularExpression::DotMatchesEverythingOption);
  for (int number = 1; number < static_cast<int>(offsets_.size()); ++number) {
    if (!pdf_.mid(offsets_[static_cast<std::size_t>(number)], 40).contains("/Annot")) continue;
    const auto found = link.match(QString::fromLatin1(objectAt(number)));
    if (!found.hasMatch()) continue;
    const auto anchor = anchors.find(found.captured(2));
    if (anchor == anchors.end()) {
      problems_ << QStringLiteral("A link leads nowhere: ") + found.captured(2);
      continue;
    }
    changes_.push_back({number, "<< /Type /Annot /Subtype /Link " + found.captured(1).toLatin1() +
                                    " /Border [0 0 0] /Dest " + placeText(anchor->second) + " >>"});
  }
}

void PdfNavigation::addOutline(const std::vector<OutlineEntry>& outline) {
  const std::vector<Relatives> relatives = relativesOf(outline);
  const int root = static_cast<int>(offsets_.size());
  const auto entry = [root](int index) { return reference(root + 1 + index); };
  QByteArray catalog = objectAt(catalog_);
  catalog.insert(catalog.lastIndexOf(">>"), "/Outlines " + reference(root) +
                                                "\n/PageMode /UseOutlines\n/Lang (en)\n"
                                                "/ViewerPreferences << /DisplayDocTitle true >>\n");
  changes_.push_back({catalog_, catalog});
  int chapters = 0, last = 0;
  for (int i = 0; i < static_cast<int>(outline.size()); ++i) {
    if (relatives[static_cast<std::size_t>(i)].parent >= 0) continue;
    ++chapters;
    last = i;
  }
  changes_.push_back({root, "<< /Type /Outlines /First " + entry(0) + " /Last " + entry(last) + " /Count " +
                                QByteArray::number(chapters) + " >>"});
  for (std::size_t i = 0; i < outline.size(); ++i) {
    const Relatives& own = relatives[i];
    QByteArray object = "<< /Title " + textString(outline[i].title) + " /Parent " +
                        (own.parent < 0 ? reference(root) : entry(own.parent)) + " /Dest " +
                        placeText(outline[i].destination);
    if (own.previous >= 0) object += " /Prev " + entry(own.previous);
    if (own.next >= 0) object += " /Next " + entry(own.next);
    // Below nought: the sections are folded.
    if (own.children > 0)
      object += " /First " + entry(own.firstChild) + " /Last " + entry(own.lastChild) + " /Count -" +
                QByteArray::number(own.children);
    changes_.push_back({root + 1 + static_cast<int>(i), object + " >>"});
  }
}

void PdfNavigation::writeChanges() {
  std::sort(changes_.begin(), changes_.end(), [](const Change& a, const Change& b) { return a.number < b.number; });
  QByteArray table = "xref\n";
  int highest = static_cast<int>(offsets_.size()) - 1;
  for (const Change& change : changes_) {
    const QByteArray offset = QByteArray::number(pdf_.size()).rightJustified(10, '0');
    table += QByteArray::number(change.number) + " 1\n" + offset + " 00000 n \n";
    pdf_ += QByteArray::number(change.number) + " 0 obj\n" + change.object + "\nendobj\n";
    highest = std::max(highest, change.number);
  }
  const qsizetype at = pdf_.size();
  pdf_ += table + "trailer\n<<\n/Size " + QByteArray::number(highest + 1) + "\n/Info " + reference(info_) + "\n/Root " +
          reference(catalog_) + "\n/Prev " + QByteArray::number(tableAt_) + "\n>>\nstartxref\n" +
          QByteArray::number(at) + "\n%%EOF\n";
}

void PdfNavigation::setCreationDate(const QDateTime& date) {
  static const QRegularExpression stamp(QStringLiteral("/CreationDate \\(D:\\d{14}"));
  const qsizetype info = offsets_.empty() ? -1 : offsets_[static_cast<std::size_t>(info_)];
  const auto found = stamp.match(QString::fromLatin1(pdf_.mid(info, 1000)));
  if (info < 0 || !found.hasMatch()) {
    problems_ << QStringLiteral("The PDF has no date.");
    return;
  }
  constexpr qsizetype digits = 14;
  pdf_.replace(info + found.capturedEnd() - digits, digits, date.toUTC().toString("yyyyMMddhhmmss").toLatin1());
}

}  // namespace manual
