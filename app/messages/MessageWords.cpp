#include "app/messages/MessageWords.h"

#include <QFileInfo>
#include <QLocale>

QString MessageWords::oneLine(QString text) {
  constexpr qsizetype longest = 80;
  for (QChar& each : text) {
    if (!each.isPrint() && !each.isSurrogate()) each = u' ';
  }
  if (text.size() <= longest) return text;
  QString begin = text.left(longest / 2), end = text.right(longest / 2);
  if (begin.back().isHighSurrogate()) begin.chop(1);  // half a character
  if (end.front().isLowSurrogate()) end.remove(0, 1);
  return begin + u'…' + end;
}

QString MessageWords::nameOf(const QString& path) {
  const QString name = QFileInfo(path).fileName();
  return oneLine(name.isEmpty() ? path : name);
}

QString MessageWords::spanOf(std::chrono::milliseconds span) {
  using std::chrono::seconds;
  constexpr seconds minute(60), exact(10);
  constexpr std::chrono::milliseconds least(10);
  const QLocale locale;
  //: %1: a number of seconds
  const QString inSeconds = tr("%1 s");
  //: %1: a number of seconds
  if (span < least) return tr("less than %1 s").arg(locale.toString(0.01, 'f', 2));
  if (span < exact) return inSeconds.arg(locale.toString(static_cast<double>(span.count()) / 1000, 'f', 2));
  const auto whole = std::chrono::duration_cast<seconds>(span);
  if (whole < minute) return inSeconds.arg(locale.toString(static_cast<qlonglong>(whole.count())));
  //: %1: minutes. %2: seconds
  return tr("%1 min %2 s").arg(whole / minute).arg((whole % minute).count());
}
