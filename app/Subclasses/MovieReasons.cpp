#include "app/Subclasses/MovieReasons.h"

#include <QFile>
#include <QList>
#include <QRegularExpression>
#include <QStringList>

namespace {

/// %1 and %2 stand for a number, a name, or a clause of their own.
const char* const patterns[] = {
    // The decoder of a movie.
    QT_TRANSLATE_NOOP("MovieReasons", "the decoder module cannot be loaded: %1"),
    QT_TRANSLATE_NOOP("MovieReasons", "no reason given"),
    QT_TRANSLATE_NOOP("MovieReasons", "the decoder module has no entry of that name"),
    QT_TRANSLATE_NOOP("MovieReasons", "the decoder module belongs to another version of this program"),
    //: %1: four characters that name the codec
    QT_TRANSLATE_NOOP("MovieReasons", "there is no decoder for the codec '%1'"),
    QT_TRANSLATE_NOOP("MovieReasons", "the decoder cannot be opened: %1"),
    QT_TRANSLATE_NOOP("MovieReasons", "there is not enough memory for a decoder"),
    // Its tracks.
    QT_TRANSLATE_NOOP("MovieReasons", "the movie has no video track"),
    QT_TRANSLATE_NOOP("MovieReasons", "there is no such track"),
    QT_TRANSLATE_NOOP("MovieReasons", "the track holds no pictures"),
    QT_TRANSLATE_NOOP("MovieReasons", "the video track has no image description"),
    QT_TRANSLATE_NOOP("MovieReasons", "the image description cannot be understood"),
    QT_TRANSLATE_NOOP("MovieReasons", "the track's media is in another file"),
    QT_TRANSLATE_NOOP("MovieReasons", "the samples lie in another file, and such references are not followed"),
    QT_TRANSLATE_NOOP("MovieReasons", "the samples are encrypted"),
    QT_TRANSLATE_NOOP("MovieReasons", "the samples overlap"),
    // A sample of a track.
    QT_TRANSLATE_NOOP("MovieReasons", "there is no such sample"),
    QT_TRANSLATE_NOOP("MovieReasons", "the sample tables do not lead to the sample"),
    QT_TRANSLATE_NOOP("MovieReasons", "the sample lies past the end of the file"),
    //: %1: the sample's number. %2: why
    QT_TRANSLATE_NOOP("MovieReasons", "the sample %1 cannot be read: %2"),
    QT_TRANSLATE_NOOP("MovieReasons", "the sample %1 is too large for its picture"),
    QT_TRANSLATE_NOOP("MovieReasons", "there is not enough memory for the sample %1"),
    QT_TRANSLATE_NOOP("MovieReasons", "the file became shorter"),
    QT_TRANSLATE_NOOP("MovieReasons", "there is no such file"),
    QT_TRANSLATE_NOOP("MovieReasons", "there is no permission to read the file"),
    QT_TRANSLATE_NOOP("MovieReasons", "the system says \"%1\""),
    // What comes out of a sample.
    QT_TRANSLATE_NOOP("MovieReasons", "the frame cannot be decoded: %1"),
    QT_TRANSLATE_NOOP("MovieReasons", "the frame cannot be used: %1"),
    QT_TRANSLATE_NOOP("MovieReasons", "the decoder gave no picture"),
    //: %1: what libav calls the pixel format, here and below
    QT_TRANSLATE_NOOP("MovieReasons", "the pixel format %1 lies outside of memory"),
    QT_TRANSLATE_NOOP("MovieReasons", "the pixel format %1 has floating-point samples"),
    QT_TRANSLATE_NOOP("MovieReasons", "the pixel format %1 is a sensor's mosaic"),
    QT_TRANSLATE_NOOP("MovieReasons", "the pixel format %1 is not known"),
};

struct Clause {
  const char* text;
  QRegularExpression shape;
};

QList<Clause> clauses() {
  QList<Clause> made;
  for (const char* const text : patterns) {
    QString shape = QRegularExpression::escape(QLatin1String(text));
    for (const char* const place : {"\\%1", "\\%2"}) shape.replace(QLatin1String(place), QLatin1String("(.+)"));
    made.append({text, QRegularExpression(QRegularExpression::anchoredPattern(shape),
                                          QRegularExpression::DotMatchesEverythingOption)});
  }
  return made;
}

}  // namespace

QString MovieReasons::clauseOf(const QString& reason) {
  static const QList<Clause> known = clauses();
  for (const Clause& clause : known) {
    const QRegularExpressionMatch match = clause.shape.match(reason);
    if (!match.hasMatch()) continue;
    QStringList parts;
    for (const QString& part : match.capturedTexts().mid(1)) parts << clauseOf(part);
    QString text = tr(clause.text);
    if (parts.isEmpty()) return text;
    return parts.size() == 1 ? text.arg(parts[0]) : text.arg(parts[0], parts[1]);
  }
  return reason;
}

QString MovieReasons::sentenceOf(const movie::MovieError& error) {
  const QString file = QFile::decodeName(error.file.c_str());
  QString reason = clauseOf(QString::fromStdString(error.reason));
  if (!error.atom.empty()) {
    //: %1: what is wrong. %2: a path of atoms such as moov/trak. %3: a number of bytes from the file's start
    reason =
        tr("%1 (atom %2 at offset %3)").arg(reason, QString::fromStdString(error.atom), QString::number(error.offset));
  }
  //: %1: what is wrong, a clause
  if (file.isEmpty()) return tr("Cannot read the movie: %1.").arg(reason);
  //: %1: the file. %2: what is wrong, a clause
  return tr("Cannot read \"%1\": %2.").arg(file, reason);
}
