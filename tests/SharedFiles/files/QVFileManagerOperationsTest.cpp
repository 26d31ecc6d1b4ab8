#include "tests/SharedFiles/files/FileFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// One family, called on a path that it cannot work on with the user's own rights.
struct Family {
  QString privileged;  ///< what it falls back to
  QString line;
  QString refusedPath;
  QStringList privilegedPaths;
  std::function<bool(const FileServices&)> plain;
  std::function<bool(bool shouldAuth, const FileServices&)> asked;
  std::function<bool(double timeout, const FileServices&)> timed;
};

class FileOperations : public FileFixture {
 protected:
  /// Every family on something that is in its way.
  QList<Family> failing() {
    using Manager = QVFileManager;
    const QString missing = path("missing"), taken = write("taken"), below = taken + "/below", free = path("free");
    write(".Trash", "a file where the trash folder belongs");
    return {
        {"authTrashFile",
         "Error trashing file: %1. Authorizing...",
         taken,
         {taken},
         [=](const FileServices& services) { return Manager::trashFile(taken, services); },
         [=](bool shouldAuth, const FileServices& services) { return Manager::trashFile(taken, shouldAuth, services); },
         [=](double timeout, const FileServices& services) { return Manager::trashFile(taken, timeout, services); }},
        {"authRemoveFile",
         "Error removing file: %1. Authorizing...",
         missing,
         {missing},
         [=](const FileServices& services) { return Manager::removeFile(missing, services); },
         [=](bool shouldAuth, const FileServices& services) {
           return Manager::removeFile(missing, shouldAuth, services);
         },
         [=](double timeout, const FileServices& services) { return Manager::removeFile(missing, timeout, services); }},
        {"authCreateDir",
         "Error creating folder: %1. Authorizing...",
         below,
         {below},
         [=](const FileServices& services) { return Manager::createDirectory(below, services); },
         [=](bool shouldAuth, const FileServices& services) {
           return Manager::createDirectory(below, shouldAuth, services);
         },
         [=](double timeout, const FileServices& services) {
           return Manager::createDirectory(below, timeout, services);
         }},
        {"authCopyFile",
         "Error copying file: %1. Authorizing...",
         missing,
         {missing, free},
         [=](const FileServices& services) { return Manager::copyFile(missing, free, services); },
         [=](bool shouldAuth, const FileServices& services) {
           return Manager::copyFile(missing, free, shouldAuth, services);
         },
         [=](double timeout, const FileServices& services) {
           return Manager::copyFile(missing, free, timeout, services);
         }},
        {"authMoveFile",
         "Error moving file: %1. Authorizing...",
         missing,
         {missing, free},
         [=](const FileServices& services) { return Manager::moveFile(missing, free, services); },
         [=](bool shouldAuth, const FileServices& services) {
           return Manager::moveFile(missing, free, shouldAuth, services);
         },
         [=](double timeout, const FileServices& services) {
           return Manager::moveFile(missing, free, timeout, services);
         }},
    };
  }
};

TEST_F(FileOperations, ThatFailAskForAdministratorRightsUnlessTold) {
  QStringList lines;
  for (const Family& family : failing()) {
    for (const bool answer : {true, false}) {
      privileges_.answer = answer;
      privileges_.calls.clear();
      EXPECT_EQ(family.plain(services_), answer);
      EXPECT_EQ(family.asked(true, services_), answer);
      const QStringList call = QStringList{family.privileged} + family.privilegedPaths;
      EXPECT_EQ(privileges_.calls, (QList<QStringList>{call, call}));
      EXPECT_FALSE(family.asked(false, services_));
      EXPECT_EQ(privileges_.calls.size(), 2);
      lines << family.line.arg(family.refusedPath) << family.line.arg(family.refusedPath);
    }
  }
  EXPECT_EQ(log_.entries(), lines);
}

TEST_F(FileOperations, WithATimeoutFailAtOnceWhenTheOperationFails) {
  privileges_.answer = false;
  for (const Family& family : failing()) EXPECT_FALSE(family.timed(1000, services_));
  EXPECT_EQ(privileges_.calls.size(), 5);
}

TEST_F(FileOperations, ThatSucceedAskForNothingAndLogNothing) {
  const QString file = write("file");
  EXPECT_TRUE(QVFileManager::copyFile(file, path("copy"), services_));
  EXPECT_TRUE(QVFileManager::moveFile(path("copy"), path("moved"), services_));
  EXPECT_TRUE(QVFileManager::removeFile(path("moved"), services_));
  EXPECT_TRUE(QVFileManager::createDirectory(path("a/b/c"), services_));
  EXPECT_TRUE(QVFileManager::trashFile(file, services_));
  EXPECT_THAT(namesIn(path("a/b")), ElementsAre("c"));
  EXPECT_EQ(read(trashed("file")), "content");
  EXPECT_THAT(privileges_.calls, IsEmpty());
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(FileOperations, RefuseANilPath) {
  for (const QString& nil : {QString(), QString("")}) {
    EXPECT_FALSE(QVFileManager::copyFile(nil, path("x"), services_));
    EXPECT_FALSE(QVFileManager::copyFile(path("x"), nil, services_));
    EXPECT_FALSE(QVFileManager::moveFile(nil, path("x"), services_));
    EXPECT_FALSE(QVFileManager::moveFile(path("x"), nil, services_));
    EXPECT_FALSE(QVFileManager::trashFile(nil, services_));
    EXPECT_FALSE(QVFileManager::removeFile(nil, services_));
    EXPECT_FALSE(QVFileManager::createDirectory(nil, services_));
  }
  EXPECT_THAT(privileges_.calls, IsEmpty());
  EXPECT_THAT(log_.entries().mid(7), ElementsAre("Error copying file: source path is nil",
                                                 "Error copying file " + path("x") + ": destination path is nil",
                                                 "Error moving file: source path is nil",
                                                 "Error moving file " + path("x") + ": destination path is nil",
                                                 "Error trashing file: path is nil", "Error removing file: path is nil",
                                                 "Error creating folder: path is nil"));
}

TEST_F(FileOperations, RefuseAPathThatIsNoText) {
  for (const QString& name : {QString(QChar(0xD800)), QString("a") + QChar(0) + "b"}) {
    EXPECT_FALSE(QVFileManager::copyFile(path(name), path("x"), services_));
    EXPECT_FALSE(QVFileManager::copyFile(write("y"), path(name), services_));
    EXPECT_FALSE(QVFileManager::moveFile(path(name), path("x"), services_));
    EXPECT_FALSE(QVFileManager::trashFile(path(name), services_));
    EXPECT_FALSE(QVFileManager::removeFile(path(name), services_));
    EXPECT_FALSE(QVFileManager::createDirectory(path(name), services_));
  }
  EXPECT_EQ(log_.entries().size(), 12);
  EXPECT_THAT(privileges_.calls, IsEmpty());
  EXPECT_EQ(namesIn(log_.home()).filter("a"), namesIn(log_.home()).filter("."));
}

TEST_F(FileOperations, TakeNamesAsData) {
  for (const QString& name : awkwardNames()) {
    const QString made = "made/" + name, copy = "copies/" + name;
    makeFolder("made");
    makeFolder("copies");
    EXPECT_TRUE(QVFileManager::createDirectory(path(made), services_));
    write(made + "/" + name, name.toUtf8());
    EXPECT_TRUE(QVFileManager::copyFile(path(made), path(copy), services_));
    EXPECT_EQ(read(path(copy + "/" + name)), name.toUtf8());
    EXPECT_TRUE(QVFileManager::moveFile(path(copy), path(copy + " moved"), services_));
    EXPECT_TRUE(QVFileManager::trashFile(path(copy + " moved"), services_));
    EXPECT_EQ(read(trashed(name + " moved/" + name)), name.toUtf8());
    EXPECT_TRUE(QVFileManager::removeFile(path(made), services_));
    EXPECT_THAT(namesIn(path("made")) + namesIn(path("copies")), IsEmpty());
  }
  EXPECT_THAT(privileges_.calls, IsEmpty());
}

TEST_F(FileOperations, TakeRelativePathsAndHandAbsoluteOnesOn) {
  const QString before = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(log_.home()));
  const QString here = QDir::currentPath();
  write("-rf", "x");
  EXPECT_TRUE(QVFileManager::copyFile("-rf", "copy", services_));
  EXPECT_TRUE(QVFileManager::removeFile("-rf", services_));
  EXPECT_TRUE(QVFileManager::createDirectory("a/b/", services_));
  EXPECT_TRUE(QVFileManager::removeFile("-rf", services_));
  EXPECT_TRUE(QDir::setCurrent(before));
  EXPECT_THAT(privileges_.calls, ElementsAre(QStringList{"authRemoveFile", here + "/-rf"}));
  EXPECT_THAT(log_.entries(), ElementsAre("Error removing file: -rf. Authorizing..."));
  EXPECT_TRUE(stands(path("a/b")));
}

TEST_F(FileOperations, LeaveWhatIsForbiddenToAdministratorRights) {
  const OrdinaryUser user(log_.home().toStdString());
  const QString folder = makeFolder("readonly"), file = write("readonly/file"), outside = write("outside");
  setMode(folder, 0555);
  EXPECT_TRUE(QVFileManager::removeFile(file, services_));
  EXPECT_TRUE(QVFileManager::trashFile(file, services_));
  EXPECT_TRUE(QVFileManager::moveFile(file, path("moved"), services_));
  EXPECT_TRUE(QVFileManager::copyFile(outside, folder + "/copy", services_));
  EXPECT_TRUE(QVFileManager::createDirectory(folder + "/new", services_));
  EXPECT_EQ(privileges_.calls.size(), 5);
  EXPECT_THAT(namesIn(folder), ElementsAre("file"));
  EXPECT_EQ(read(file), "content");
  setMode(folder, 0755);
}

// --- Trash -----------------------------------------------------------------------------------------------------------

class Trash : public FileFixture {};

TEST_F(Trash, IsMadeForItsOwnerAlone) {
  ::umask(0);
  EXPECT_TRUE(QVFileManager::trashFile(write("file"), false, services_));
  ::umask(022);
  EXPECT_EQ(QVFileManager::permissionsOfFile(path(".Trash")), 0700U);
}

TEST_F(Trash, TakesWhatIsMissingAsDone) {
  EXPECT_TRUE(QVFileManager::trashFile(path("missing"), false, services_));
  EXPECT_TRUE(QVFileManager::trashFile(write("file") + "/below", false, services_));
  EXPECT_FALSE(stands(path(".Trash")));
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(Trash, KeepsEveryFileOfTheSameName) {
  for (const QByteArray content : {"1", "2", "3"}) {
    EXPECT_TRUE(QVFileManager::trashFile(write("clip.mov", content), false, services_));
  }
  EXPECT_EQ(read(trashed("clip.mov")) + read(trashed("clip 2.mov")) + read(trashed("clip 3.mov")), "123");
}

TEST_F(Trash, TakesLockedFilesAndFoldersUnlocked) {
  const OrdinaryUser user(log_.home().toStdString());
  const QString file = write("file"), folder = makeFolder("folder");
  write("folder/inside");
  EXPECT_TRUE(QVFileManager::lockFile(file));
  EXPECT_TRUE(QVFileManager::lockFile(folder));
  EXPECT_TRUE(QVFileManager::trashFile(file, false, services_));
  EXPECT_TRUE(QVFileManager::trashFile(folder, false, services_));
  EXPECT_FALSE(QVFileManager::isFileLocked(trashed("file")));
  EXPECT_EQ(read(trashed("folder/inside")), "content");
}

TEST_F(Trash, TakesALinkAndLeavesWhatItLeadsTo) {
  const QString target = write("target");
  setMode(target, 0444);
  EXPECT_TRUE(QVFileManager::trashFile(makeLink("link", target), false, services_));
  EXPECT_TRUE(QVFileManager::trashFile(makeLink("dangling", "nowhere"), false, services_));
  EXPECT_EQ(QVFileManager::permissionsOfFile(target), 0444U);
  EXPECT_THAT(namesIn(path(".Trash")), ElementsAre("dangling", "link"));
}

TEST_F(Trash, DoesNotTakeTheFolderThatItIsIn) {
  EXPECT_TRUE(QVFileManager::trashFile(write("file"), false, services_));
  EXPECT_FALSE(QVFileManager::trashFile(path(".Trash"), false, services_));
  EXPECT_EQ(read(trashed("file")), "content");
}

TEST_F(Trash, AndRemovalAndMovesLeaveStandardFoldersAlone) {
  const QString home = log_.home(), documents = makeFolder("Documents");
  for (const QString& folder : {home, home + "/", documents, documents + "//"}) {
    EXPECT_FALSE(QVFileManager::trashFile(folder, false, services_));
    EXPECT_FALSE(QVFileManager::removeFile(folder, false, services_));
    EXPECT_FALSE(QVFileManager::moveFile(folder, path("elsewhere"), false, services_));
    EXPECT_TRUE(stands(folder)) << folder.toStdString();
  }
  EXPECT_TRUE(QVFileManager::removeFile(makeFolder("Documents/inside"), false, services_));
}

}  // namespace
