#include <QRegularExpression>

#include <gtest/gtest.h>

#include "tools/manual/PdfNavigation.h"

namespace manual {
namespace {

/// A PDF of two pages with a link to "#x", as QPdfWriter would lay it out.
QByteArray pdf(const QByteArray& link = "#x") {
  const QList<QByteArray> objects{
      "<<\n/Title (T)\n/CreationDate (D:20200102030405Z)\n>>",
      "<<\n/Type /Catalog\n/Pages 3 0 R\n>>",
      "<<\n/Type /Pages\n/Kids \n[\n4 0 R\n5 0 R\n]\n/Count 2\n>>",
      "<<\n/Type /Page\n/Parent 3 0 R\n>>",
      "<<\n/Type /Page\n/Parent 3 0 R\n>>",
      "<<\n/Type /Annot\n/Subtype /Link\n\n/Rect [1 2 3 4]\n/Border [0 0 0]\n/A <<\n/Type /Action\n/S /URI\n/URI (" +
          link + ")\n>>\n>>"};
  QByteArray bytes = "%PDF-1.4\n", table = "0000000000 65535 f \n";
  for (int i = 0; i < objects.size(); ++i) {
    table += QByteArray::number(bytes.size()).rightJustified(10, '0') + " 00000 n \n";
    bytes += QByteArray::number(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
  }
  const QByteArray at = QByteArray::number(bytes.size());
  return bytes + "xref\n0 7\n" + table + "trailer\n<<\n/Size 7\n/Info 1 0 R\n/Root 2 0 R\n>>\nstartxref\n" + at +
         "\n%%EOF\n";
}

/// The object as the last table has it.
QByteArray object(const QByteArray& bytes, int number) {
  const QByteArray table = bytes.mid(bytes.lastIndexOf("\nxref\n"));
  const QRegularExpression row(QStringLiteral("\\n%1 1\\n(\\d{10}) 00000 n").arg(number));
  const auto found = row.match(QString::fromLatin1(table));
  const qsizetype at = found.hasMatch() ? found.captured(1).toLongLong() : -1;
  return at < 0 ? QByteArray() : bytes.mid(at, bytes.indexOf("endobj", at) - at);
}

TEST(PdfNavigation, LeadsLinksToTheirPlaces) {
  PdfNavigation navigation(pdf());
  navigation.add({.anchors = {{"x", {1, 700}}}, .outline = {}});
  EXPECT_TRUE(navigation.problems().isEmpty());
  const QByteArray link = object(navigation.bytes(), 6);
  EXPECT_TRUE(link.contains("/Dest [5 0 R /XYZ null 700.0 null]")) << link.constData();
  EXPECT_TRUE(link.contains("/Rect [1 2 3 4]"));
  EXPECT_FALSE(link.contains("/URI"));
}

TEST(PdfNavigation, LeavesLinksToTheWebAlone) {
  PdfNavigation navigation(pdf("https://www.quorvane.example/"));
  navigation.add({.anchors = {{"x", {1, 700}}}, .outline = {}});
  EXPECT_TRUE(navigation.problems().isEmpty());
  EXPECT_TRUE(object(navigation.bytes(), 6).isEmpty());
}

TEST(PdfNavigation, TellsOfLinksThatLeadNowhere) {
  PdfNavigation navigation(pdf());
  navigation.add({.anchors = {{"y", {1, 700}}}, .outline = {}});
  EXPECT_EQ(navigation.problems(), QStringList{"A link leads nowhere: x"});
}

TEST(PdfNavigation, AddsAnOutlineOfChaptersAndSections) {
  PdfNavigation navigation(pdf());
  navigation.add(
      {.anchors = {{"x", {0, 1}}},
       .outline = {{"One", 1, {0, 800}}, {"One A", 2, {0, 500}}, {"One B", 2, {1, 400}}, {"Two", 1, {1, 300}}}});
  const QByteArray made = navigation.bytes();
  EXPECT_TRUE(object(made, 2).contains("/Outlines 7 0 R"));
  EXPECT_TRUE(object(made, 2).contains("/Pages 3 0 R"));
  EXPECT_TRUE(object(made, 7).contains("/First 8 0 R /Last 11 0 R /Count 2"));
  EXPECT_TRUE(object(made, 8).contains("/First 9 0 R /Last 10 0 R /Count -2"));
  EXPECT_TRUE(object(made, 8).contains("/Next 11 0 R"));
  EXPECT_TRUE(object(made, 9).contains("/Parent 8 0 R")) << object(made, 9).constData();
  EXPECT_TRUE(object(made, 10).contains("/Prev 9 0 R"));
  EXPECT_FALSE(object(made, 10).contains("/Next"));
  EXPECT_TRUE(object(made, 11).contains("/Title <FEFF00540077006F>"));
  EXPECT_TRUE(made.contains("/Size 12\n"));
}

TEST(PdfNavigation, ContinuesTheTableThatWasThere) {
  const QByteArray before = pdf();
  PdfNavigation navigation(before);
  navigation.add({.anchors = {{"x", {0, 1}}}, .outline = {}});
  EXPECT_TRUE(navigation.bytes().startsWith(before));
  EXPECT_TRUE(navigation.bytes().contains("/Prev " + QByteArray::number(before.indexOf("xref\n0 7"))));
}

TEST(PdfNavigation, SetsTheDateWithoutMovingAnything) {
  PdfNavigation navigation(pdf());
  navigation.setCreationDate(QDateTime::fromSecsSinceEpoch(1700000000, Qt::UTC));
  EXPECT_TRUE(navigation.bytes().contains("/CreationDate (D:20231114221320Z)"));
  EXPECT_EQ(navigation.bytes().size(), pdf().size());
}

TEST(PdfNavigation, TellsOfBytesThatAreNoPdf) {
  for (const char* bytes : {"", "trailer", "%PDF-1.4\ntrailer\n<< /Size 3 >>\nstartxref\n5\n"}) {
    PdfNavigation navigation(bytes);
    navigation.add({.anchors = {{"x", {0, 1}}}, .outline = {}});
    navigation.setCreationDate(QDateTime::currentDateTimeUtc());
    EXPECT_FALSE(navigation.problems().isEmpty());
  }
}

}  // namespace
}  // namespace manual
