#include "app/Subclasses/DroppedFiles.h"

#include <QMimeData>
#include <QUrl>
#include <algorithm>

#include "SharedFiles/tasks/FileNameBytes.h"

bool hasFileNames(const QMimeData& dragged) {
  const QList<QUrl> urls = dragged.urls();
  return std::any_of(urls.begin(), urls.end(), [](const QUrl& url) { return url.isLocalFile(); });
}

QStringList fileNamesOf(const QMimeData& dragged) {
  QStringList files;
  for (const QUrl& url : dragged.urls()) {
    if (!url.isLocalFile()) continue;
    const QByteArray name = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
    if (const auto path = fileNameAsText(name.toStdString())) files << *path;
  }
  return files;
}
