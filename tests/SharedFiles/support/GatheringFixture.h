#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <utility>
#include <vector>

#include "SharedFiles/support/QVTroubleshootingUtils.h"
#include "SharedFiles/tasks/QVTaskEx.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/alerts/AlertFixture.h"

/// The folders of a user and of a machine, all below one.
class GatheringPaths : public LinuxPathPlatform {
 public:
  explicit GatheringPaths(QString root) : LinuxPathPlatform(1000, BundleInfo()), root_(std::move(root)) {}

  QStringList searchPaths(SearchPathDirectory directory, SearchPathDomain domain) const override {
    if (directory == SearchPathDirectory::NSDesktopDirectory) return {root_ + "/Desktop"};
    if (directory != SearchPathDirectory::NSLibraryDirectory) return {};
    return {root_ + (domain == SearchPathDomain::Local ? "/machine" : "/user")};
  }
  QString homeDirectory() const override { return root_; }
  QString temporaryDirectory() const override { return root_ + "/tmp"; }

 private:
  QString root_;
};

/// Notes what would be opened.
class TestWorkspace : public Workspace {
 public:
  bool openFile(const QString& path) override {
    opened.append(path);
    return opens;
  }
  bool openURL(const QString& address) override {
    opened.append(address);
    return opens;
  }
  QStringList opened;
  bool opens = true;
};

/// Gathering in folders of its own, and someone who answers the alerts.
class LogGatherings : public Alerts {
 protected:
  LogGatherings() {
    for (const char* folder : {"/Desktop", "/tmp", "/user", "/machine"}) QDir().mkpath(root() + folder);
  }

  QString root() const { return home_.path(); }
  QString put(const QString& path, const QByteArray& bytes = "text") const {
    EXPECT_TRUE(QDir().mkpath(QFileInfo(root() + path).path()));
    QFile file(root() + path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return file.fileName();
  }
  static QString run(const QString& tool, const QStringList& arguments) {
    return QVTaskEx::stringFromTask(tool, arguments, StringEncoding::utf8, nullptr);
  }
  /// The paths of the files and links in an archive, as they stand below the folder that all lie in.
  QStringList entriesOf(const QString& archive) const {
    QStringList entries;
    for (QString entry : run("/usr/bin/bsdtar", {"-tf", archive}).split('\n', Qt::SkipEmptyParts)) {
      const QString top = "QV_App_Logs" + root();
      EXPECT_TRUE(entry.startsWith("QV_App_Logs/")) << entry.toStdString();
      if (!entry.endsWith('/')) entries.append(entry.remove(0, top.size()));
    }
    return entries;
  }
  QByteArray contentsIn(const QString& archive, const QString& path) const {
    return QVTaskEx::dataFromTask("/usr/bin/unzip", {"-p", archive, "QV_App_Logs" + root() + path}, nullptr)
        .value_or("");
  }
  QString desktop(const QString& name) const { return root() + "/Desktop/" + name; }
  QStringList desktopNames() const { return QDir(root() + "/Desktop").entryList(QDir::Files); }

  bool gather(const QStringList& names, const QStringList& more = {}) {
    return QVTroubleshootingUtils::gatherLogsForAppsWithNames(names, true, more, services_);
  }
  /// Answers the next alert and notes what it said.
  void answerAlert() {
    onPanel([this](AlertPanel& panel) {
      alerts_.push_back({panel.accessibleName(), textOf(panel, "informativeText")});
      EXPECT_EQ(panel.parentWidget(), nullptr);
      panel.defaultButton()->click();
    });
  }

  GatheringPaths paths_{home_.path()};
  TestWorkspace workspace_;
  QDateTime now_ = QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5));
  FileServices files_{.paths = paths_};
  TroubleshootingServices services_{
      .paths = paths_, .files = files_, .workspace = workspace_, .now = [this] { return now_; }};
  std::vector<std::pair<QString, QString>> alerts_;
};
