#include "SharedFiles/support/DesktopWorkspace.h"

#include <QDesktopServices>
#include <QUrl>

bool DesktopWorkspace::openFile(const QString& path) {
  return QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

bool DesktopWorkspace::openURL(const QString& address) {
  return QDesktopServices::openUrl(QUrl(address));
}

Workspace& DesktopWorkspace::standard() {
  static DesktopWorkspace workspace;
  return workspace;
}
