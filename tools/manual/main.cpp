// The user manual as a PDF.
//
//   manual_pdf VERSION TEXTS PICTURES FILE    makes FILE of the Markdown files of the folder TEXTS, in the order of
//                                             their names, with the pictures of the folder PICTURES. Fails, with a line
//                                             for each, where a picture is missing or a link leads nowhere.
//
// SOURCE_DATE_EPOCH, seconds since 1970, is the date inside instead of the moment's: then equal input makes equal
// bytes.

#include <QBuffer>
#include <QDir>
#include <QGuiApplication>
#include <QHashSeed>
#include <QPdfWriter>
#include <QSaveFile>
#include <cstdio>

#include "tools/manual/ManualPdf.h"
#include "tools/manual/MarkdownFlow.h"
#include "tools/manual/Typography.h"

namespace {

QStringList complainAll(const QStringList& problems) {
  for (const QString& problem : problems) std::fprintf(stderr, "manual_pdf: %s\n", qPrintable(problem));
  return problems;
}

/// The name that links call a file by.
void appendFiles(manual::MarkdownFlow& flow, const QDir& texts) {
  for (const QString& name : texts.entryList({QStringLiteral("*.md")}, QDir::Files, QDir::Name)) {
    QFile file(texts.filePath(name));
    if (file.open(QIODevice::ReadOnly)) flow.append(name, QString::fromUtf8(file.readAll()));
  }
}

QDateTime creationDate() {
  bool given = false;
  const qlonglong seconds = qEnvironmentVariable("SOURCE_DATE_EPOCH").toLongLong(&given);
  return given ? QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC) : QDateTime::currentDateTimeUtc();
}

bool write(const QString& path, const QByteArray& bytes) {
  QSaveFile file(path);
  if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit()) return true;
  complainAll({QStringLiteral("cannot write %1: %2").arg(path, file.errorString())});
  return false;
}

int makeManual(const QString& version, const QDir& texts, const QDir& pictures, const QString& path) {
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  QPdfWriter writer(&buffer);
  manual::setUpPage(writer);
  writer.setTitle(QStringLiteral("Vextrel User Manual: Lumacheck"));
  writer.setCreator(QStringLiteral("Lumacheck %1").arg(version));

  manual::MarkdownFlow flow(writer, pictures);
  appendFiles(flow, texts);
  if (flow.boxes().empty()) return complainAll({QStringLiteral("there are no texts")}).isEmpty() ? 0 : 1;
  manual::ManualPdf pdf(writer, flow.boxes(), version);
  pdf.draw();

  manual::PdfNavigation navigation(buffer.data());
  navigation.setCreationDate(creationDate());
  navigation.add(pdf.navigation());
  if (!complainAll(flow.problems() + navigation.problems()).isEmpty()) return 1;
  return write(path, navigation.bytes()) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fputs("usage: manual_pdf VERSION TEXTS PICTURES FILE\n", stderr);
    return 2;
  }
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("TZ", "UTC");
  QHashSeed::setDeterministicGlobalSeed();
  const QGuiApplication application(argc, argv);
  const auto argument = [argv](int index) { return QFile::decodeName(argv[index]); };
  return makeManual(argument(1), QDir(argument(2)), QDir(argument(3)), argument(4));
}
