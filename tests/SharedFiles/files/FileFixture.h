#pragma once

#include <QFile>
#include <QString>
#include <QStringList>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SharedFiles/authorization/AuthorizationController.h"
#include "SharedFiles/files/QVFileManager.h"
#include "tests/SharedFiles/ProcessLog.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/system/OrdinaryUser.h"

/// Names that a shell, an option parser or an archiver would take for something else.
inline QStringList awkwardNames() {
  return {"-rf", "--", "a;id", "$(id)",          "`id`",    "two\nlines", " blanks ",
          "*",   "@a", "@-.x", "\"quoted\" 'x'", "back\\n", ".hidden",    QString::fromUtf8("Grün €"),
          "a:b"};
}

/// Administrator rights that only write down what they are asked for.
class FakePrivileges : public PrivilegedFileOperations {
 public:
  bool authTrashFile(const QString& path) override { return record({"authTrashFile", path}); }
  bool authRemoveFile(const QString& path) override { return record({"authRemoveFile", path}); }
  bool authCreateDir(const QString& path) override { return record({"authCreateDir", path}); }
  bool authCopyFile(const QString& source, const QString& destination) override {
    return record({"authCopyFile", source, destination});
  }
  bool authMoveFile(const QString& source, const QString& destination) override {
    return record({"authMoveFile", source, destination});
  }

  QList<QStringList> calls;
  bool answer = true;
  std::function<void()> effect = [] {};  ///< what a call brings about

 private:
  bool record(const QStringList& call) {
    calls << call;
    effect();
    return answer;
  }
};

/// The file manager in a home folder of its own, without administrator rights.
class FileFixture : public testing::Test {
 protected:
  QString path(const QString& name) const { return log_.home() + "/" + name; }
  QString trashed(const QString& name) const { return path(".Trash/" + name); }

  QString write(const QString& name, const QByteArray& content = "content") const {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
    file.write(content);
    return path(name);
  }
  QString makeFolder(const QString& name) const {
    EXPECT_TRUE(QDir().mkpath(path(name)));
    return path(name);
  }
  QString makeLink(const QString& name, const QString& target) const {
    EXPECT_EQ(::symlink(QFile::encodeName(target).constData(), QFile::encodeName(path(name)).constData()), 0);
    return path(name);
  }
  static QByteArray read(const QString& file) {
    QFile opened(file);
    return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray("(unreadable)");
  }
  /// Whether something stands there, a link that leads nowhere included.
  static bool stands(const QString& file) {
    struct stat status = {};
    return ::lstat(QFile::encodeName(file).constData(), &status) == 0;
  }
  static QStringList namesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
  }
  static void setMode(const QString& file, mode_t mode) {
    EXPECT_EQ(::chmod(QFile::encodeName(file).constData(), mode), 0);
  }

  ProcessLog log_;
  FakePrivileges privileges_;
  FileServices services_{.privileges = &privileges_};
};
