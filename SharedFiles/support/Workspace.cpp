#include "SharedFiles/support/Workspace.h"

#include <QDesktopServices>
#include <QUrl>

bool Workspace::openFile(const QString& path) {
  return QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

bool Workspace::openURL(const QString& address) {
  return QDesktopServices::openUrl(QUrl(address));
}

Workspace& Workspace::standard() {
  static Workspace workspace;
  return workspace;
}
