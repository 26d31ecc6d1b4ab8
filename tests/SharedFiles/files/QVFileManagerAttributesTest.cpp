#include <array>

#include <sys/xattr.h>

#include "tests/SharedFiles/files/FileFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FileAttributes : public FileFixture {
 protected:
  static QByteArray attribute(const QString& file, const char* name) {
    std::array<char, 100> value = {};
    const ssize_t length = ::getxattr(QFile::encodeName(file).constData(), name, value.data(), value.size());
    return length < 0 ? QByteArray("(none)") : QByteArray(value.data(), length);
  }
};

TEST_F(FileAttributes, HoldAColorLabelAmongTheOtherBitsOfTheFindersRecord) {
  const QString file = write("file");
  EXPECT_EQ(QVFileManager::colorLabelOfFile(file), 0);
  QByteArray record(32, '\x11');
  ASSERT_EQ(::setxattr(QFile::encodeName(file).constData(), "user.com.apple.FinderInfo", record.constData(), 32, 0), 0);
  for (int label = 7; label >= 0; --label) {
    EXPECT_TRUE(QVFileManager::setColorLabel(label, file));
    EXPECT_EQ(QVFileManager::colorLabelOfFile(file), label);
    record[9] = static_cast<char>(0x11 | (label << 1));
    EXPECT_EQ(attribute(file, "user.com.apple.FinderInfo"), record);
  }
  for (const int wrong : {-1, 8}) EXPECT_FALSE(QVFileManager::setColorLabel(wrong, file));
  EXPECT_FALSE(QVFileManager::setColorLabel(1, path("missing")));
  EXPECT_EQ(QVFileManager::colorLabelOfFile(path("missing")), 0);
  EXPECT_TRUE(QVFileManager::setColorLabel(3, write("fresh")));
  EXPECT_EQ(attribute(path("fresh"), "user.com.apple.FinderInfo"), QByteArray(9, '\0') + '\x06' + QByteArray(22, '\0'));
}

TEST_F(FileAttributes, HoldTheProgressOfACopy) {
  const QString file = write("file");
  constexpr auto name = "user.com.apple.progress.fractionCompleted";
  for (const auto& [fraction, text] : std::vector<std::pair<double, QByteArray>>{
           {0, "0.000"}, {0.5, "0.500"}, {1.0 / 3, "0.333"}, {0.9996, "1.000"}, {1, "1.000"}}) {
    EXPECT_TRUE(QVFileManager::setCopyProgress(fraction, file, services_));
    EXPECT_EQ(attribute(file, name), text);
  }
  EXPECT_TRUE(QVFileManager::removeCopyProgress(file, services_));
  EXPECT_EQ(attribute(file, name), "(none)");
  EXPECT_FALSE(QVFileManager::removeCopyProgress(file, services_));
  EXPECT_FALSE(QVFileManager::setCopyProgress(0.5, path("missing"), services_));
  EXPECT_FALSE(QVFileManager::setCopyProgress(0.5, {}, services_));
}

TEST_F(FileAttributes, HoldTheCreationDateOfATouchedFile) {
  for (const QString& name : awkwardNames()) {
    EXPECT_TRUE(QVFileManager::touchFileForCopying(path(name), services_));
    EXPECT_EQ(read(path(name)), "");
    EXPECT_EQ(QVFileManager::creationDateOfFile(path(name)), QDateTime(QDate(1984, 1, 24), QTime(8, 0), Qt::UTC));
  }
  EXPECT_EQ(attribute(path("-rf"), "user.creation-date"), "1984-01-24 08:00:00 +0000");
  const QDateTime own = QVFileManager::creationDateOfFile(write("untouched"));
  EXPECT_LT(std::abs(own.secsTo(QDateTime::currentDateTimeUtc())), 100);
  EXPECT_FALSE(QVFileManager::creationDateOfFile(path("missing")).isValid());
  EXPECT_FALSE(QVFileManager::touchFileForCopying(path("missing/file"), services_));
  EXPECT_FALSE(QVFileManager::touchFileForCopying({}, services_));
}

TEST_F(FileAttributes, TellOfADisk) {
  const QVariantMap info = QVFileManager::infoForDisk(log_.home(), services_);
  EXPECT_THAT(info.keys(), ElementsAre("DeviceNode", "FilesystemType", "FreeSpace", "MountPoint", "TotalSize",
                                       "VolumeName", "WritableVolume"));
  EXPECT_TRUE(log_.home().startsWith(info["MountPoint"].toString()));
  EXPECT_GT(info["TotalSize"].toLongLong(), info["FreeSpace"].toLongLong());
  EXPECT_GT(info["FreeSpace"].toLongLong(), 0);
  EXPECT_TRUE(info["WritableVolume"].toBool());
  EXPECT_EQ(QVFileManager::infoForDisk("/proc", services_)["FilesystemType"], "proc");
  EXPECT_THAT(QVFileManager::infoForDisk(path("missing"), services_), IsEmpty());
  EXPECT_THAT(QVFileManager::infoForDisk({}, services_), IsEmpty());
}

TEST_F(FileAttributes, LockAFileByItsPermissions) {
  const QString file = write("file");
  for (const auto& [before, locked, unlocked] : std::vector<std::array<mode_t, 3>>{
           {0664, 0444, 0644}, {04777, 04555, 04755}, {0400, 0400, 0600}, {0, 0, 0200}}) {
    EXPECT_TRUE(QVFileManager::setPermissions(before, file));
    EXPECT_TRUE(QVFileManager::lockFile(file));
    EXPECT_TRUE(QVFileManager::isFileLocked(file));
    EXPECT_EQ(QVFileManager::permissionsOfFile(file), locked);
    EXPECT_TRUE(QVFileManager::unlockFile(file));
    EXPECT_FALSE(QVFileManager::isFileLocked(file));
    EXPECT_EQ(QVFileManager::permissionsOfFile(file), unlocked);
  }
  const QString missing = path("missing");
  EXPECT_FALSE(QVFileManager::lockFile(missing) || QVFileManager::unlockFile(missing) ||
               QVFileManager::isFileLocked(missing) || QVFileManager::setPermissions(0600, missing));
  EXPECT_FALSE(QVFileManager::permissionsOfFile(missing));
}

TEST_F(FileAttributes, ChangeTheOwner) {
  const QString file = write("-file");
  EXPECT_TRUE(QVFileManager::setOwner(QString("%1:%2").arg(::geteuid()).arg(::getegid()), file, services_));
  for (const QString& wrong :
       {QString("no such user"), QString("-R"), QString("$(id)"), QString(), QString("--help")}) {
    EXPECT_FALSE(QVFileManager::setOwner(wrong, file, services_)) << wrong.toStdString();
  }
  EXPECT_FALSE(QVFileManager::setOwner("root", path("missing"), services_));
}

TEST(Wildcards, MatchWholeNames) {
  struct Row {
    QString name, wildcard;
    bool matches;
  };
  const std::vector<Row> rows = {
      {"clip.mov", "*.mov", true},
      {"clip.mov", "clip.???", true},
      {"clip.mov", "*.MOV", false},
      {"clip.mov", "clip", false},
      {"clip.mov", "[a-c]*", true},
      {"clip.mov", "[!a-c]*", false},
      {".hidden", "*", true},
      {"", "*", true},
      {"", "", true},
      {"a*b", "a\\*b", true},
      {"axb", "a\\*b", false},
      {"two\nlines", "two*", true},
      {"-rf", "-*", true},
      {"$(id)", "$(id)", true},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(QVFileManager::filenameMatchesWildcard(row.name, row.wildcard), row.matches)
        << row.name.toStdString() << " " << row.wildcard.toStdString();
  }
}

TEST_F(FileAttributes, ListTheNamesThatMatch) {
  for (const QString name : {"b.log", "a.log", "c.txt", "-rf.log", "two\nlines.log"}) write(name);
  const QByteArray odd = QFile::encodeName(path("")) + "odd\xff.log";
  ASSERT_EQ(::mkdir(odd.constData(), 0700), 0);
  EXPECT_THAT(log_.entries(), IsEmpty());
  EXPECT_THAT(QVFileManager::filesInFolder(log_.home(), "*.log"),
              ElementsAre("-rf.log", "a.log", "b.log", "two\nlines.log"));
  EXPECT_THAT(log_.entries(), ElementsAre("The name of a file is not UTF-8 and was refused: odd%FF.log"));
  EXPECT_EQ(::rmdir(odd.constData()), 0);
  EXPECT_THAT(QVFileManager::filesInFolder(path("missing"), "*"), IsEmpty());
}

}  // namespace
