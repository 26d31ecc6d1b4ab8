#include "SharedFiles/analytics/MultipartForm.h"

#include <QFile>
#include <QMetaType>
#include <QStringList>
#include <QUrl>
#include <algorithm>

namespace {

void appendFile(QByteArray& body, const QString& key, const QUrl& url) {
  if (!url.isLocalFile()) return;
  body += "Content-Disposition: form-data; name=\"" + key.toUtf8() + "\"; filename=\"" + url.fileName().toUtf8() +
          "\"\r\nContent-Type: application/octet-stream\r\n\r\n";
  QFile file(url.toLocalFile());
  if (file.open(QIODevice::ReadOnly)) body += file.readAll();
}

/// A text as it stands within the description of a list: in quotes unless it is of letters and digits only.
QString quoted(QString text) {
  const bool plain = !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar c) {
    return c.unicode() < 0x80 && (c.isLetterOrNumber() || c == u'_');
  });
  if (plain) return text;
  return u'"' + text.replace(u'\\', QLatin1String("\\\\")).replace(u'"', QLatin1String("\\\"")) + u'"';
}

/// What "%@" makes of a value: a list shows its parts between parentheses, a dictionary its keys and values between
/// braces, each on a line of its own and four blanks further in.
QString descriptionOf(const QVariant& value, const QString& indent = {}) {
  const QString inner = indent + QStringLiteral("    ");
  const auto part = [&inner](const QVariant& each) {
    return each.typeId() == QMetaType::QString ? quoted(each.toString()) : descriptionOf(each, inner);
  };
  QStringList lines;
  switch (value.typeId()) {
    case QMetaType::Bool:
      return QString::number(value.toInt());
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
      for (const QVariant& each : value.toList()) lines << inner + part(each);
      return QStringLiteral("(\n") + lines.join(QLatin1String(",\n")) + (lines.isEmpty() ? "" : "\n") + indent + u')';
    case QMetaType::QVariantMap: {
      const QVariantMap map = value.toMap();
      for (auto each = map.begin(); each != map.end(); ++each)
        lines << inner + quoted(each.key()) + QStringLiteral(" = ") + part(each.value()) + QStringLiteral(";\n");
      return QStringLiteral("{\n") + lines.join(QString()) + indent + u'}';
    }
    default:
      return value.toString();
  }
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
