#include <QTemporaryDir>
#include <chrono>
#include <stop_token>
#include <thread>

#include "SharedFiles/tasks/QVTaskEx.h"
#include "tests/SharedFiles/files/FileFixture.h"
#include "tests/system/ThreadsRefused.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

// --- Archives of the real tools --------------------------------------------------------------------------------------

class Archives : public FileFixture {
 protected:
  /// A folder with a file of every awkward name, a link out of it and an empty folder.
  QString makeSource(const QString& name) const {
    makeFolder(name + "/empty");
    for (const QString& file : awkwardNames()) write(name + "/" + file, file.toUtf8());
    makeLink(name + "/link", "/etc/passwd");
    return path(name);
  }
  static QStringList listed(const QString& archive) {
    const auto text = QVTaskEx::dataFromTask("/usr/bin/unzip", {"-Z1", archive}, nullptr);
    return QString::fromUtf8(text.value_or("")).split('\n', Qt::SkipEmptyParts);
  }
  static bool isWhole(const QString& archive) {
    return QVTaskEx::terminationCodeFromTask("/usr/bin/unzip", {"-tqq", archive}) == 0 &&
           QVTaskEx::terminationCodeFromTask("/usr/bin/bsdtar", {"-tf", archive}) == 0;
  }
  void expectSource(const QString& folder) const {
    for (const QString& file : awkwardNames()) EXPECT_EQ(read(folder + "/" + file), file.toUtf8());
    EXPECT_EQ(QFile::symLinkTarget(folder + "/link"), "/etc/passwd");
    EXPECT_TRUE(namesIn(folder + "/empty").isEmpty() && stands(folder + "/empty"));
    EXPECT_EQ(namesIn(folder).size(), awkwardNames().size() + 2);
  }
};

TEST_F(Archives, HoldAFolderUnderItsNameAndComeBackAsItWas) {
  const QString archive = path("logs.zip");
  EXPECT_TRUE(QVFileManager::compressFile(makeSource("source"), archive, services_));
  EXPECT_TRUE(isWhole(archive));
  EXPECT_EQ(listed(archive).first(), "source/");
  EXPECT_TRUE(QVFileManager::decompressFile(archive, path("out"), services_));
  EXPECT_THAT(namesIn(path("out")), ElementsAre("source"));
  expectSource(path("out/source"));
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(Archives, HoldWhatIsInAFolderWhenToldSo) {
  const QString archive = path("logs.zip");
  EXPECT_TRUE(QVFileManager::compressFile(makeSource("source"), archive, false, services_));
  EXPECT_TRUE(isWhole(archive));
  EXPECT_TRUE(QVFileManager::decompressFile(archive, path("out/deeper"), services_));
  expectSource(path("out/deeper"));
}

TEST_F(Archives, HoldASingleFileUnderItsName) {
  const QString file = write("a file.txt", "text");
  for (const bool includeParent : {true, false}) {
    EXPECT_TRUE(QVFileManager::compressFile(file, path("one.zip"), includeParent, services_));
    EXPECT_THAT(listed(path("one.zip")), ElementsAre("a file.txt"));
  }
}

TEST_F(Archives, TakeNamesAsData) {
  for (const QString& name : awkwardNames()) {
    makeFolder("in/" + name);
    write("in/" + name + "/" + name, name.toUtf8());
    makeFolder("out");
    const QString archive = path("out/" + name);
    EXPECT_TRUE(QVFileManager::compressFile(path("in/" + name), archive, services_)) << name.toStdString();
    EXPECT_TRUE(QVFileManager::decompressFile(archive, path("in/" + name + " out"), services_));
    EXPECT_EQ(read(path("in/" + name + " out/" + name + "/" + name)), name.toUtf8()) << name.toStdString();
    EXPECT_TRUE(QVFileManager::removeFile(path("in"), services_));
  }
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(Archives, KeepNamesThatAreNotUtf8) {
  const QByteArray odd = QFile::encodeName(makeFolder("source")) + "/odd \xff",
                   back = QFile::encodeName(path("out/source")) + "/odd \xff";
  ASSERT_EQ(::mkdir(odd.constData(), 0700), 0);
  EXPECT_TRUE(QVFileManager::compressFile(path("source"), path("a.zip"), services_));
  EXPECT_TRUE(QVFileManager::decompressFile(path("a.zip"), path("out"), services_));
  EXPECT_EQ(::rmdir(odd.constData()), 0);
  EXPECT_EQ(::rmdir(back.constData()), 0);
}

TEST_F(Archives, PutWhatIsInTheirPlaceIntoTheTrash) {
  const QString archive = write("a.zip", "an older archive"), folder = makeFolder("out");
  write("out/older");
  EXPECT_TRUE(QVFileManager::compressFile(write("file"), archive, services_));
  EXPECT_EQ(read(trashed("a.zip")), "an older archive");
  EXPECT_THAT(listed(archive), ElementsAre("file"));
  EXPECT_TRUE(QVFileManager::decompressFile(archive, folder, services_));
  EXPECT_THAT(namesIn(folder), ElementsAre("file"));
  EXPECT_THAT(namesIn(trashed("out")), ElementsAre("older"));
}

TEST_F(Archives, AreNotWrittenOverWhatCannotBeTrashed) {
  write(".Trash", "in the way");
  privileges_.answer = false;
  EXPECT_FALSE(QVFileManager::compressFile(write("file"), write("a.zip", "older"), services_));
  EXPECT_EQ(read(path("a.zip")), "older");
  makeFolder("out/kept");
  EXPECT_FALSE(QVFileManager::decompressFile(path("a.zip"), path("out"), services_));
  EXPECT_TRUE(stands(path("out/kept")));
}

TEST_F(Archives, AreNotMadeOfWhatIsMissing) {
  EXPECT_FALSE(QVFileManager::compressFile(path("missing"), path("a.zip"), services_));
  EXPECT_FALSE(QVFileManager::compressFile(write("file"), path("missing/a.zip"), services_));
  EXPECT_FALSE(QVFileManager::compressFile({}, path("a.zip"), services_));
  EXPECT_FALSE(QVFileManager::compressFile(path("file"), {}, services_));
  EXPECT_FALSE(QVFileManager::decompressFile(path("missing"), path("out"), services_));
  EXPECT_FALSE(QVFileManager::decompressFile({}, path("out"), services_));
  EXPECT_THAT(namesIn(log_.home()).filter("a.zip") + namesIn(log_.home()).filter("out"), IsEmpty());
}

TEST_F(Archives, ThatAreDamagedLeaveNoEmptyFolder) {
  EXPECT_FALSE(QVFileManager::decompressFile(write("a.zip", "no archive"), path("out"), services_));
  EXPECT_FALSE(stands(path("out")));
  EXPECT_THAT(log_.entries(),
              ElementsAre("Error decompressing file " + path("a.zip") + ": the archiver ended with status 1"));
}

TEST_F(Archives, HoldEverythingOrDoNotExist) {
  const OrdinaryUser user(log_.home().toStdString());
  const QString source = makeFolder("source");
  write("source/readable");
  setMode(write("source/secret"), 0);
  EXPECT_FALSE(QVFileManager::compressFile(source, path("a.zip"), services_));
  EXPECT_FALSE(stands(path("a.zip")));
  EXPECT_THAT(log_.entries(), ElementsAre("Error compressing file " + source + ": the archiver ended with status 1"));
}

TEST_F(Archives, ThatAreStoppedDoNotExist) {
  std::stop_source stop;
  makeFolder("source");
  write("source/huge");
  ASSERT_EQ(::truncate(QFile::encodeName(path("source/huge")).constData(), off_t{20} << 30U), 0);
  std::thread stopper([&] {
    while (!stands(path("a.zip"))) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    stop.request_stop();
  });
  EXPECT_FALSE(QVFileManager::compressFile(path("source"), path("a.zip"), true, services_, stop.get_token()));
  stopper.join();
  EXPECT_FALSE(stands(path("a.zip")));
  EXPECT_FALSE(QVFileManager::compressFile(path("source"), path("b.zip"), true, services_, stop.get_token()));
  EXPECT_FALSE(stands(path("b.zip")));
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(Archives, AreWholeWhenNobodyStopsThem) {
  const std::stop_source stop;
  EXPECT_TRUE(QVFileManager::compressFile(makeSource("source"), path("a.zip"), true, services_, stop.get_token()));
  EXPECT_TRUE(isWhole(path("a.zip")));
}

TEST_F(Archives, WriteNothingOutsideTheirFolder) {
  // Entries that climb out, are absolute, or go through a link that an earlier entry makes.
  write("evil");
  makeLink("way", log_.home());
  makeFolder("in/way");
  write("in/way/through");
  makeFolder("work");
  const QString shellLine =
      "cd \"$0/work\" && bsdtar -cPf ../a.zip --format zip ../evil \"$0/evil\" && cd .. && "
      "bsdtar -cPf b.zip --format zip way -C in way/through";
  EXPECT_EQ(QVTaskEx::terminationCodeFromTask("/bin/sh", {"-c", shellLine, log_.home()}), 0);
  EXPECT_TRUE(QVFileManager::removeFile(path("evil"), services_));
  QVFileManager::decompressFile(path("a.zip"), path("out"), services_);
  QVFileManager::decompressFile(path("b.zip"), path("out 2"), services_);
  EXPECT_FALSE(stands(path("evil")));
  EXPECT_FALSE(stands(path("through")));
}

// --- The tools of the original platform, stood in for
// -----------------------------------------------------------------

/// A root with tools that write down their arguments, one a line, after the tool's name.
class SettledTools : public FileFixture {
 protected:
  void addTool(const QString& tool, const QByteArray& script = "") {
    QDir().mkpath(QFileInfo(root_ + tool).path());
    QFile file(root_ + tool);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\nprintf '%s\\n' '" + tool.toUtf8() + "' \"$@\" >> " + QFile::encodeName(root_) + "/calls\n" +
               script);
    file.close();
    setMode(root_ + tool, 0755);
  }
  QStringList calls() const {
    const QString text = QString::fromUtf8(read(root_ + "/calls"));
    return text.split('\n').mid(0, text.count('\n'));
  }

  QTemporaryDir place_;
  QString root_ = place_.path();
  PlatformTools tools_{root_};
  FileServices fakes_{.tools = tools_, .privileges = &privileges_};
};

TEST_F(SettledTools, AreNotRunWhereTheSystemGivesNoThread) {
  addTool("/usr/bin/ditto");
  const QString source = write("file");
  const std::stop_source stop;
  const ThreadsRefused refused;
  EXPECT_FALSE(QVFileManager::compressFile(source, path("a.zip"), true, fakes_, stop.get_token()));
  EXPECT_THAT(calls(), ElementsAre());
  EXPECT_TRUE(log_.entries().value(0).startsWith("No thread could be started: "));
}

TEST_F(SettledTools, PackAndUnpackWithDitto) {
  addTool("/usr/bin/ditto", "for last; do :; done\n: > \"$last\"\n");
  const QString source = write("@-so;urce"), archive = path("-rf.zip"), folder = path("$(out)");
  EXPECT_TRUE(QVFileManager::compressFile(source, archive, fakes_));
  EXPECT_TRUE(QVFileManager::compressFile(source, archive, true, fakes_));
  EXPECT_TRUE(QVFileManager::compressFile(source, archive, false, fakes_));
  EXPECT_TRUE(QVFileManager::decompressFile(archive, folder, fakes_));
  EXPECT_THAT(calls(), ElementsAre("/usr/bin/ditto", "-ck", "--keepParent", source, archive,  //
                                   "/usr/bin/ditto", "-ck", "--keepParent", source, archive,  //
                                   "/usr/bin/ditto", "-ck", source, archive,                  //
                                   "/usr/bin/ditto", "-xk", archive, folder));
  EXPECT_THAT(namesIn(path(".Trash")), UnorderedElementsAre("-rf.zip", "-rf 2.zip"));
}

TEST_F(SettledTools, AnswerWhetherDittoLeftTheResult) {
  addTool("/usr/bin/ditto", "exit 1\n");
  EXPECT_FALSE(QVFileManager::compressFile(write("file"), path("a.zip"), fakes_));
  EXPECT_FALSE(QVFileManager::decompressFile(path("file"), path("out"), fakes_));
  EXPECT_FALSE(stands(path("out")));
}

TEST_F(SettledTools, WriteTheCopyProgressWithXattr) {
  addTool("/usr/bin/xattr");
  const QString file = write("-w");
  EXPECT_TRUE(QVFileManager::setCopyProgress(0.5, file, fakes_));
  EXPECT_TRUE(QVFileManager::setCopyProgress(2.0 / 3, file, fakes_));
  EXPECT_TRUE(QVFileManager::removeCopyProgress(file, fakes_));
  const QString name = "com.apple.progress.fractionCompleted";
  EXPECT_THAT(calls(), ElementsAre("/usr/bin/xattr", "-w", name, "0.500", file,  //
                                   "/usr/bin/xattr", "-w", name, "0.667", file,  //
                                   "/usr/bin/xattr", "-d", name, file));
}

TEST_F(SettledTools, AskDiskutilForAPropertyList) {
  addTool("/usr/sbin/diskutil",
          "printf '%s' '<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>VolumeName</key>"
          "<string>Macintosh HD</string><key>TotalSize</key><integer>42</integer></dict></plist>'\n");
  const QVariantMap info = QVFileManager::infoForDisk("/", fakes_);
  EXPECT_EQ(info, (QVariantMap{{"VolumeName", "Macintosh HD"}, {"TotalSize", 42LL}}));
  EXPECT_THAT(calls(), ElementsAre("/usr/sbin/diskutil", "info", "-plist", "/"));
}

TEST_F(SettledTools, ChangeTheOwnerWithChownWhereverItIs) {
  const QString file = write("file");
  addTool("/usr/bin/chown");
  EXPECT_TRUE(QVFileManager::setOwner("-R", file, fakes_));
  addTool("/usr/sbin/chown", "exit 1\n");
  EXPECT_FALSE(QVFileManager::setOwner("a;id", file, fakes_));
  EXPECT_THAT(calls(), ElementsAre("/usr/bin/chown", "-h", "--", "-R", file,  //
                                   "/usr/sbin/chown", "-h", "--", "a;id", file));
}

TEST_F(SettledTools, TouchFiles) {
  addTool("/usr/bin/touch", ": > \"$1\"\n");
  EXPECT_TRUE(QVFileManager::touchFileForCopying(path("-t"), fakes_));
  EXPECT_THAT(calls(), ElementsAre("/usr/bin/touch", path("-t")));
}

TEST_F(SettledTools, ListInterfacesWithIfconfigOrWhatIsThere) {
  EXPECT_EQ(tools_.networkInterfaces(), (ToolCommand{root_ + "/usr/bin/ip", {"address", "show"}}));
  addTool("/sbin/ifconfig");
  EXPECT_EQ(tools_.networkInterfaces(), (ToolCommand{root_ + "/sbin/ifconfig", {}}));
}

TEST_F(SettledTools, HaveEquivalentsWithTheNamesKeptFromBeingOptions) {
  addTool("/usr/bin/bsdtar");
  const QString env = root_ + "/usr/bin/env", bsdtar = root_ + "/usr/bin/bsdtar";
  const auto pack = [&](const QStringList& plain, const QString& folder, const QString& name) {
    const QStringList start{"LC_ALL=C", bsdtar, "-c", "--format", "zip"};
    return ToolCommand{env, start + plain + QStringList{"-f", "/a.zip", "-C", folder, "--", name}};
  };
  const QStringList plain{"-s", ",^\\./,,S"};
  EXPECT_EQ(tools_.compress("/a/@b", "/a.zip", true), pack(plain, "/a", "./@b"));
  EXPECT_EQ(tools_.compress("/-b", "/a.zip", true), pack(plain, "/", "./-b"));
  EXPECT_EQ(tools_.compress("/a/c:b", "/a.zip", true), pack({}, "/a", "./c:b"));
  EXPECT_EQ(tools_.compress("/usr", "/a.zip", false), pack({}, "/usr", "."));
  EXPECT_EQ(tools_.decompress("/a.zip", "/out"),
            (ToolCommand{env, {"LC_ALL=C.UTF-8", bsdtar, "-x", "-f", "/a.zip", "-C", "/out"}}));
  EXPECT_FALSE(tools_.archivesWithDitto());
  EXPECT_FALSE(tools_.writeAttribute("name", "value", "/file"));
  EXPECT_FALSE(tools_.deleteAttribute("name", "/file"));
  EXPECT_FALSE(tools_.diskInformation("/"));
}

TEST_F(SettledTools, ThatAreMissingAreNamed) {
  EXPECT_FALSE(QVFileManager::compressFile(write("file"), path("a.zip"), fakes_));
  EXPECT_EQ(log_.entries().value(0), "Error: " + root_ + "/usr/bin/bsdtar is not executable");
}

}  // namespace
