#include "SharedFiles/tasks/FileNameBytes.h"

#include <QStringDecoder>
#include <QStringEncoder>
#include <cstdlib>
#include <memory>

#include <unistd.h>

#include "SharedFiles/log/QVLog.h"

namespace {

void dropTrailingSlashes(std::string& path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
}

}  // namespace

std::optional<std::string> bytesOfPath(const QString& path) {
  QStringEncoder encoder(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
  const QByteArray encoded = encoder.encode(path);
  if (encoder.hasError() || encoded.contains('\0')) {
    QVLog::appendLog("The path of a file is no valid text and was refused: %@",
                     QString::fromLatin1(encoded.toPercentEncoding("/")));
    return std::nullopt;
  }
  std::string bytes = encoded.toStdString();
  dropTrailingSlashes(bytes);
  return bytes;
}

std::optional<QString> fileNameAsText(const std::string& name) {
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  const QByteArray bytes = QByteArray::fromStdString(name);
  QString text = decoder.decode(bytes);
  if (!decoder.hasError()) return text;
  QVLog::appendLog("The name of a file is not UTF-8 and was refused: %@",
                   QString::fromLatin1(bytes.toPercentEncoding("/")));
  return std::nullopt;
}

QString absolutePath(const QString& path) {
  if (path.isEmpty()) return {};
  const auto bytes = bytesOfPath(path);
  if (!bytes) return {};
  if (bytes->front() == '/') return QString::fromStdString(*bytes);
  const std::unique_ptr<char, decltype(&std::free)> folder(::getcwd(nullptr, 0), &std::free);
  if (!folder) return {};
  const auto text = fileNameAsText(folder.get());
  return text ? (*text == "/" ? *text : *text + '/') + QString::fromStdString(*bytes) : QString();
}
