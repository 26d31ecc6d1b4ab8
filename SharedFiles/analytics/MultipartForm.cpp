#include "SharedFiles/analytics/MultipartForm.h"

#include <QFile>
#include <QMetaType>
#include <QUrl>

namespace {

void appendFile(QByteArray& body, const QString& key, const QUrl& url) {
  if (!url.isLocalFile()) return;
  body += "Content-Disposition: form-data; name=\"" + key.toUtf8() + "\"; filename=\"" + url.fileName().toUtf8() +
          "\"\r\nContent-Type: application/octet-stream\r\n\r\n";
  QFile file(url.toLocalFile());
  if (file.open(QIODevice::ReadOnly)) body += file.readAll();
}

/// What "%@" makes of a value.
QString descriptionOf(const QVariant& value) {
  return value.typeId() == QMetaType::Bool ? QString::number(value.toInt()) : value.toString();
}

}  // namespace

QByteArray MultipartForm::generateFormData(const QVariantMap& dictionary, const QString& boundary) {
  constexpr qsizetype firstRoom = 100;
  QByteArray body;
  body.reserve(firstRoom);
  for (auto entry = dictionary.cbegin(); entry != dictionary.cend(); ++entry) {
    body += "--" + boundary.toUtf8() + "\r\n";
    if (entry.value().typeId() == QMetaType::QUrl) {
      appendFile(body, entry.key(), entry.value().toUrl());
    } else {
      body += "Content-Disposition: form-data; name=\"" + entry.key().toUtf8() + "\"\r\n\r\n" +
              descriptionOf(entry.value()).toUtf8();
    }
    body += "\r\n";
  }
  return body;
}
