#include "app/FileNames.h"

#include <QStringDecoder>

#include "SharedFiles/QVLog.h"

std::optional<QString> textOfFileName(const QByteArray& name) {
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  const QString text = decoder.decode(name);
  if (!decoder.hasError()) return text;
  QVLog::appendLog("The name of a file is not UTF-8 and was refused: %@",
                   QString::fromLatin1(name.toPercentEncoding("/")));
  return std::nullopt;
}
