#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>

#include "tests/SharedFiles/authorization/AuthorizationFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

const QString removal = "Unable to delete path %1 because it is a system directory.\n";

class PrivilegedFiles : public AuthorizationFixture {
 protected:
  static QString text(const char* name) { return QString::fromUtf8(name); }
  void link(const QString& target, const QString& name) const {
    ASSERT_EQ(::symlink(QFile::encodeName(target).constData(), QFile::encodeName(at(name)).constData()), 0);
  }
};

// --- Refusals -------------------------------------------------------------------------------------------------------

TEST_F(PrivilegedFiles, OfTheSystemAreRefusedWithTheirMessages) {
  const QString elsewhere = at("elsewhere");
  standIn("pkexec", "exit 1");
  const QStringList own = {log_.home(), at("Desktop"), at(".local/share/quorvane")};
  // The superuser's tools run for real: a refusal that failed would cost no more than the test's own folder.
  const std::vector<std::pair<AuthorizationController*, QStringList>> rows = {
      {&controller(), own + QStringList{"/", "/usr", "/bin"}}, {&superusers(), own}};
  for (const auto& row : rows) {
    AuthorizationController* const files = row.first;
    becomeUser(files == rows.front().first ? 1000 : 0);
    for (const QString& path : row.second) {
      const auto said = [&path](const char* message) { return QString(message).arg(path) + '\n'; };
      EXPECT_EQ(console([&] { EXPECT_FALSE(files->authRemoveFile(path)); }), removal.arg(path));
      EXPECT_EQ(console([&] { EXPECT_FALSE(files->authTrashFile(path)); }),
                said("Unable to trash path %1 because it is a system directory."));
      EXPECT_EQ(console([&] { EXPECT_FALSE(files->authTrashFile(path, true)); }),
                said("Unable to trash path %1 because it is a system directory."));
      EXPECT_EQ(console([&] { EXPECT_FALSE(files->authTrashFolderContents(path)); }),
                said("Unable to trash folder contents of path %1 because it is a system directory."));
      EXPECT_EQ(console([&] { EXPECT_FALSE(files->authTrashFolderContents(path, true)); }),
                said("Unable to trash folder contents of path %1 because it is a system directory."));
      EXPECT_EQ(console([&] { EXPECT_FALSE(files->authMoveFolderContents(path, elsewhere)); }),
                said("Unable to move contents of path %1 because it is a system directory."));
      EXPECT_EQ(console([&] { EXPECT_FALSE(files->authMoveFile(path, elsewhere)); }),
                said("Unable to move path %1 because it is a system directory."));
    }
  }
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(PrivilegedFiles, OfTheSystemAreKnownHoweverTheyAreWritten) {
  QDir().mkpath(at("Desktop"));
  QDir().mkpath(at("folder"));
  link(log_.home(), "homeLink");
  standIn("pkexec", "exit 1");
  const QStringList own = {at("folder/../Desktop"), at("Desktop//"), at("homeLink/Desktop")};
  AuthorizationController& files = controller();
  for (const QString& path : own + QStringList{"/usr/", "//usr", "/.", "/../usr"})
    EXPECT_EQ(console([&] { EXPECT_FALSE(files.authRemoveFile(path)); }), removal.arg(path));
  AuthorizationController& root = superusers();
  for (const QString& path : own)
    EXPECT_EQ(console([&] { EXPECT_FALSE(root.authRemoveFile(path)); }), removal.arg(path));
  EXPECT_TRUE(stands("Desktop"));
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(PrivilegedFiles, ThatNobodyMayChangeAreRefusedBeforeAPasswordIsAsked) {
  const auto isSystems = [](const QString& path) {
    return "Unable to change path " + path + " because it is a system directory.";
  };
  const auto isNoPath = [](const QString& path) {
    return "Unable to change path " + path + " because a folder on its way is missing or it is too long.";
  };
  QDir().mkpath(at("Desktop"));
  write("from/Desktop", "1");
  write("file", "1");
  const QString around = QFileInfo(log_.home()).path(), endless = "/" + QString("name/").repeated(900) + "name";
  AuthorizationController& files = controller();
  const std::vector<std::pair<std::function<bool()>, QString>> rows = {
      {[&] { return files.authRemoveFile("/boot"); }, isSystems("/boot")},
      {[&] { return files.authTrashFile("/srv"); }, isSystems("/srv")},
      {[&] { return files.authMoveFile("/media", at("moved")); }, isSystems("/media")},
      {[&] { return files.authRemoveFile(around); }, isSystems(around)},
      {[&] { return files.authCopyFile(at("file"), "/"); }, isSystems("/")},
      {[&] { return files.authCreateDir("/"); }, isSystems("/")},
      {[&] { return files.authMoveFile(at("from/Desktop"), log_.home()); }, isSystems(at("Desktop"))},
      {[&] { return files.authRemoveFile(at("none/../file")); }, isNoPath(at("none/../file"))},
      {[&] { return files.authCopyFile(at("file"), at("none/./copied")); }, isNoPath(at("none/./copied"))},
      {[&] { return files.authCreateDir(endless); }, isNoPath(endless)}};
  QStringList told;
  for (const auto& [operation, sentence] : rows) {
    EXPECT_FALSE(operation()) << sentence.toStdString();
    EXPECT_EQ(log_.entries(), told << sentence);
  }
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_FALSE(files.isAuthorized());
  EXPECT_TRUE(files.authRemoveFile(at("file"))) << "the others are not";
}

TEST_F(PrivilegedFiles, NeedASourceAndADestination) {
  AuthorizationController& files = controller();
  const QString file = at("file");
  EXPECT_EQ(console([&] { EXPECT_FALSE(files.authMoveFile(QString(), file)); }),
            "Error in authMoveFile: old path is null\n");
  EXPECT_EQ(console([&] { EXPECT_FALSE(files.authMoveFile(file, QString())); }),
            "Error in authMoveFile: new path is null\n");
  EXPECT_EQ(console([&] { EXPECT_FALSE(files.authMoveFile(QString(), QString())); }),
            "Error in authMoveFile: old path is null\n");
  EXPECT_EQ(console([&] { EXPECT_FALSE(files.authCopyFile(QString(), file)); }),
            "Error in authCopyFile: old path is null\n");
  EXPECT_EQ(console([&] { EXPECT_FALSE(files.authCopyFile(file, QString())); }),
            "Error in authCopyFile: new path is null\n");
  EXPECT_EQ(console([&] { EXPECT_FALSE(files.authMoveFile("/usr", QString())); }),
            "Error in authMoveFile: new path is null\n");
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(PrivilegedFiles, AreNotMeantByNoPath) {
  for (const uid_t user : {1000U, 0U}) {
    AuthorizationController* files = &controller();
    becomeUser(user);
    for (const QString& path : {QString(), QString(""), QString("/a") + QChar(0) + "b", QString(QChar(0xD800))}) {
      EXPECT_FALSE(files->authRemoveFile(path));
      EXPECT_FALSE(files->authTrashFile(path));
      EXPECT_FALSE(files->authTrashFolderContents(path));
      EXPECT_FALSE(files->authCreateDir(path));
      console([&] { EXPECT_FALSE(files->authMoveFile(path, at("x"))); });
    }
  }
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_FALSE(log_.entries().isEmpty());
}

TEST_F(PrivilegedFiles, AreLeftAloneWithoutTheRight) {
  standIn("pkcheck", "exit 1");
  write("file", "1");
  AuthorizationController& files = controller();
  EXPECT_FALSE(files.authRemoveFile(at("file")));
  EXPECT_FALSE(files.authTrashFile(at("file")));
  EXPECT_FALSE(files.authMoveFile(at("file"), at("moved")));
  EXPECT_FALSE(files.authCopyFile(at("file"), at("copied")));
  EXPECT_FALSE(files.authCreateDir(at("made")));
  EXPECT_EQ(read("file"), "1");
  EXPECT_THAT(toolLines(), IsEmpty());
}

// --- Command lines --------------------------------------------------------------------------------------------------

TEST_F(PrivilegedFiles, AreChangedByTheSettledCommandLines) {
  AuthorizationController& files = controller();
  const QStringList names = {"plain", "-rf", "a;id", "$(id)", "two\nlines", " blanks ", text("\xC3\xA4")};
  for (const QString& name : names) {
    write(name, "1");
    EXPECT_TRUE(files.authCreateDir(at("made/" + name)));
    EXPECT_TRUE(files.authCopyFile(at(name), at("copied")));
    EXPECT_TRUE(files.authMoveFile(at(name), at("moved")));
    EXPECT_TRUE(eventually([&] { return !stands(name); }));
    EXPECT_TRUE(files.authRemoveFile(at("moved")));
    EXPECT_TRUE(eventually([&] { return !stands("moved"); }));
    EXPECT_EQ(toolLines(), (QList<QStringList>{{"/bin/mkdir", "-p", at("made/" + name)},
                                               {"/bin/cp", "-f", "-p", "-R", at(name), at("copied")},
                                               {"/bin/mv", "-f", at(name), at("moved")},
                                               {"/bin/rm", "-Rdf", at("moved")}}));
    EXPECT_TRUE(stands("made/" + name));
  }
}

TEST_F(PrivilegedFiles, AreNamedAbsolutelyAndWithoutLinksOnTheWay) {
  AuthorizationController& files = controller();
  write("real/folder/file", "1");
  link("real", "link");
  link(at("real/folder"), "folderLink");
  ASSERT_TRUE(QDir::setCurrent(at("real")));
  files.authCopyFile("folder/file", "copied");
  files.authRemoveFile(at("link/absent"));
  files.authCopyFile(at("real//folder/file"), at("folderLink"));
  files.authCopyFile(at("link/folder/"), at("real/new/"));
  files.authCreateDir(at("link/a/b"));
  files.authRemoveFile(at("folderLink/"));
  ASSERT_TRUE(QDir::setCurrent("/"));
  EXPECT_EQ(toolLines(), (QList<QStringList>{{"/bin/cp", "-f", "-p", "-R", at("real/folder/file"), at("real/copied")},
                                             {"/bin/rm", "-Rdf", at("real/absent")},
                                             {"/bin/cp", "-f", "-p", "-R", at("real/folder/file"), at("real/folder")},
                                             {"/bin/cp", "-f", "-p", "-R", at("real/folder"), at("real/new")},
                                             {"/bin/mkdir", "-p", at("real/a/b")},
                                             {"/bin/rm", "-Rdf", at("folderLink")}}));
  EXPECT_TRUE(stands("real/folder/file")) << "a link is removed itself";
}

TEST_F(PrivilegedFiles, AreNotCopiedWhenTheyDoNotExist) {
  EXPECT_FALSE(controller().authCopyFile(at("absent"), at("copied")));
  EXPECT_FALSE(superusers().authCopyFile(at("absent"), at("copied")));
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(PrivilegedFiles, AreNotWaitedFor) {
  standIn("pkexec", "echo started; sleep 0.3; : >'" + QFile::encodeName(at("through")) + "'");
  write("file", "1");
  AuthorizationController& files = controller();
  const std::function<bool()> operations[] = {
      [&] { return files.authRemoveFile(at("file")); }, [&] { return files.authTrashFile(at("file")); },
      [&] { return files.authMoveFile(at("file"), at("moved")); },
      [&] { return files.authCopyFile(at("file"), at("copied")); }, [&] { return files.authCreateDir(at("made")); }};
  for (const auto& operation : operations) {
    EXPECT_TRUE(operation());
    EXPECT_FALSE(stands("through"));
    EXPECT_TRUE(eventually([&] { return stands("through"); }));
    QFile::remove(at("through"));
  }
}

// --- The trash ------------------------------------------------------------------------------------------------------

TEST_F(PrivilegedFiles, GoToTheTrashUnderTheirNameOrADatedOne) {
  struct Row {
    QString name, dated;
  };
  const std::vector<Row> rows = {{"clip.mov", "clip_20240101120000.mov"},
                                 {"archive.tar.gz", "archive.tar_20240101120000.gz"},
                                 {"noextension", "noextension_20240101120000."},
                                 {".hidden", ".hidden_20240101120000."},
                                 {"two\nlines.mov", "two\nlines_20240101120000.mov"}};
  AuthorizationController& files = controller();
  for (const Row& row : rows) {
    write(row.name, "first");
    EXPECT_TRUE(files.authTrashFile(at(row.name)));
    EXPECT_TRUE(eventually([&] { return read(".Trash/" + row.name) == "first"; })) << row.name.toStdString();
    write(row.name, "second");
    EXPECT_TRUE(files.authTrashFile(at(row.name), true));
    EXPECT_TRUE(eventually([&] { return read(".Trash/" + row.dated) == "second"; })) << row.name.toStdString();
    EXPECT_EQ(read(".Trash/" + row.name), "first");
    EXPECT_EQ(toolLines(), (QList<QStringList>{{"/bin/mv", "-f", at(row.name), at(".Trash/" + row.name)},
                                               {"/bin/mv", "-f", at(row.name), at(".Trash/" + row.dated)}}));
  }
}

TEST_F(PrivilegedFiles, TakeALinkInTheTrashForTaken) {
  QDir().mkpath(at(".Trash"));
  link("nowhere", ".Trash/clip.mov");
  write("clip.mov", "1");
  EXPECT_TRUE(controller().authTrashFile(at("clip.mov")));
  EXPECT_TRUE(eventually([&] { return read(".Trash/clip_20240101120000.mov") == "1"; }));
}

TEST_F(PrivilegedFiles, OfAFolderGoToTheTrashOneByOne) {
  AuthorizationController& files = controller();
  QDir().mkpath(at("folder"));
  EXPECT_TRUE(files.authTrashFolderContents(at("folder"))) << "nothing is there";
  EXPECT_THAT(calls(), IsEmpty());
  for (const char* name : {"a.mov", "-rf", ".hidden", "sub/inner"}) write(QString("folder/") + name, "1");
  EXPECT_TRUE(files.authTrashFolderContents(at("folder")));
  EXPECT_TRUE(eventually([&] { return namesIn("folder").isEmpty(); }));
  EXPECT_TRUE(eventually([&] { return stands(".Trash/sub/inner"); }));
  EXPECT_THAT(namesIn(".Trash"), UnorderedElementsAre("-rf", ".hidden", "a.mov", "sub"));
  EXPECT_FALSE(files.authTrashFolderContents(at("absent")));
  EXPECT_FALSE(files.authTrashFolderContents(at(".Trash/a.mov")));
}

TEST_F(PrivilegedFiles, WithNamesThatAreNoTextAreRefusedAndTheOthersDone) {
  for (const char* folder : {"trashed", "moved"}) {
    write(QString(folder) + "/good", "1");
    const QByteArray name = QFile::encodeName(at(folder)) + "/bad\xE4";
    const int descriptor = ::open(name.constData(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(descriptor, 0);
    ::close(descriptor);
  }
  QDir().mkpath(at("into"));
  AuthorizationController& files = controller();
  EXPECT_FALSE(files.authTrashFolderContents(at("trashed")));
  EXPECT_TRUE(eventually([&] { return stands(".Trash/good"); }));
  EXPECT_FALSE(files.authMoveFolderContents(at("moved"), at("into")));
  EXPECT_TRUE(eventually([&] { return stands("into/good"); }));
  EXPECT_EQ(log_.entries(), QStringList(2, "The name of a file is not UTF-8 and was refused: bad%E4"));
  // Qt could not remove these with the rest.
  for (const char* folder : {"trashed", "moved"})
    EXPECT_EQ(::unlink((QFile::encodeName(at(folder)) + "/bad\xE4").constData()), 0) << "still there";
}

TEST_F(PrivilegedFiles, OfAFolderMoveIntoAnotherOneByOne) {
  AuthorizationController& files = controller();
  for (const char* name : {"a", "-b", "c/inner"}) write(QString("from/") + name, "1");
  QDir().mkpath(at("to"));
  EXPECT_TRUE(files.authMoveFolderContents(at("from"), at("to")));
  EXPECT_TRUE(eventually([&] {  // one of them has a name of its own on its way
    return namesIn("from").isEmpty() && stands("to/c/inner") && namesIn("to").size() == 3;
  }));
  EXPECT_THAT(namesIn("to"), UnorderedElementsAre("-b", "a", "c"));
  EXPECT_TRUE(files.authMoveFolderContents(at("from"), at("to")));
  EXPECT_FALSE(files.authMoveFolderContents(at("to"), at("absent")));
  EXPECT_EQ(console([&] { EXPECT_FALSE(files.authMoveFolderContents(at("to/c"), QString())); }),
            "Error in authMoveFile: new path is null\n");
  EXPECT_TRUE(stands("to/c/inner"));
}

// --- The superuser --------------------------------------------------------------------------------------------------

TEST_F(PrivilegedFiles, AreTheSuperusersToChange) {
  AuthorizationController& root = superusers();
  write("folder/-rf", "1");
  EXPECT_TRUE(root.authCopyFile(at("folder"), at("copied")));
  EXPECT_TRUE(eventually([&] { return read("copied/-rf") == "1"; }));
  EXPECT_TRUE(root.authMoveFile(at("copied"), at("moved")));
  EXPECT_TRUE(eventually([&] { return stands("moved/-rf") && !stands("copied"); }));
  EXPECT_TRUE(root.authCreateDir(at("a/b/c")));
  EXPECT_TRUE(eventually([&] { return stands("a/b/c"); }));
  EXPECT_TRUE(root.authRemoveFile(at("moved")));
  EXPECT_TRUE(eventually([&] { return !stands("moved"); }));
  EXPECT_TRUE(root.authTrashFile(at("folder")));
  EXPECT_TRUE(eventually([&] { return stands(".Trash/folder/-rf"); }));
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(PrivilegedFiles, AreChangedForTheSuperuserByTheSameCommandLinesAndNotWaitedFor) {
  AuthorizationController& root = superusers();
  write("folder/entry", "1");
  write("file", "1");
  EXPECT_TRUE(root.authCopyFile(at("file"), at("copied")));
  EXPECT_TRUE(root.authCreateDir(at("made")));
  EXPECT_TRUE(root.authRemoveFile(at("absent")));
  EXPECT_TRUE(root.authTrashFolderContents(at("folder"), true));
  EXPECT_TRUE(root.authTrashFile(at("file"), true));
  EXPECT_EQ(superusersRuns(), (QList<QStringList>{{"started", "/bin/cp", "-f", "-p", "-R", at("file"), at("copied")},
                                                  {"started", "/bin/mkdir", "-p", at("made")},
                                                  {"started", "/bin/rm", "-Rdf", at("absent")},
                                                  {"started", "/bin/rm", "-R", "-f", at("folder/entry")},
                                                  {"started", "/bin/rm", "-Rdf", at(".Trash/file")}}));
  write("other", "1");
  EXPECT_TRUE(root.authTrashFile(at("other")));
  EXPECT_EQ(superusersRuns(), (QList<QStringList>{{"started", "/bin/mv", "-f", at("other"), at(".Trash/other")}}));
  EXPECT_EQ(root.authExecTask("/bin/true", {"a", "b"}, false), 0);
  EXPECT_EQ(root.authExecTask("/bin/true", {}), 0);
  EXPECT_EQ(superusersRuns(), (QList<QStringList>{{"waited for", "/bin/true", "a", "b"}, {"started", "/bin/true"}}));
  EXPECT_TRUE(eventually([&] { return stands(".Trash/other") && stands("made") && stands("copied"); }));
}

TEST_F(PrivilegedFiles, GoToTheTrashOfTheUserWhoBecameSuperuser) {
  AuthorizationController& files = controller();
  QDir().mkpath(at(".Trash"));
  write("clip.mov", "1");
  becomeUser(0);
  EXPECT_TRUE(files.authTrashFile(at("clip.mov"), true));
  EXPECT_TRUE(eventually([&] { return stands(".Trash/clip.mov"); }));
  write("clip.mov", "2");
  EXPECT_TRUE(files.authTrashFile(at("clip.mov")));
  EXPECT_TRUE(eventually([&] { return read(".Trash/clip_20240101120000.mov") == "2"; }));
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(PrivilegedFiles, KeepTheirPlaceWhenTheRootAccountRemovesTheirTrashTarget) {
  AuthorizationController& root = superusers();
  write("clip.mov", "1");
  write(".Trash/clip.mov", "older");
  EXPECT_TRUE(root.authTrashFile(at("clip.mov"), true));
  EXPECT_TRUE(root.authTrashFile(at("clip.mov"), true));
  QThread::msleep(100);
  EXPECT_EQ(read("clip.mov"), "1");
  EXPECT_EQ(read(".Trash/clip.mov"), "older");
}

TEST_F(PrivilegedFiles, OfAFolderAreDeletedOnTheRootAccount) {
  AuthorizationController& root = superusers();
  for (const char* name : {"a", "-rf", "sub/inner"}) write(QString("folder/") + name, "1");
  EXPECT_TRUE(root.authTrashFolderContents(at("folder"), true));
  EXPECT_TRUE(eventually([&] { return namesIn("folder").isEmpty(); }));
  EXPECT_TRUE(stands("folder"));
  EXPECT_FALSE(stands(".Trash/a"));
  // The home folder's neighbour, as it were: what is protected stays, the rest goes.
  write("Desktop/file", "1");
  write(".local/share/quorvane/file", "1");
  write(".local/share/other", "1");
  const QString kept = at(".local/share/quorvane");
  EXPECT_EQ(console([&] { EXPECT_FALSE(root.authTrashFolderContents(at(".local/share"), true)); }),
            "Unable to trash path " + kept + " because it is a system directory.\n");
  EXPECT_TRUE(eventually([&] { return !stands(".local/share/other"); }));
  EXPECT_TRUE(stands(".local/share/quorvane/file"));
}

}  // namespace
