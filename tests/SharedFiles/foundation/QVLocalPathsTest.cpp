#include <QSet>
#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SharedFiles/foundation/QVLocalPaths.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

using Kind = SearchPathDirectory;
using Domain = SearchPathDomain;

/// A platform that answers what the test says.
class FakePlatform : public PathPlatform {
 public:
  QStringList searchPaths(SearchPathDirectory directory, SearchPathDomain domain) const override {
    const auto found = paths.find({directory, domain});
    return found == paths.end() ? QStringList() : found->second;
  }
  QString homeDirectory() const override { return "/home/ann"; }
  QString userName() const override { return "ann"; }
  QString temporaryDirectory() const override { return "/tmp/ann"; }
  uid_t realUserId() const override { return userId; }
  std::size_t configurationString(int name, char* buffer, std::size_t size) const override {
    askedName = name;
    askedSize = size;
    std::memcpy(buffer, cache.data(), std::min(size, cache.size()));
    return cacheLength;
  }
  QString globallyUniqueString() const override { return "UNIQUE-1"; }
  std::time_t time() const override { return now; }
  std::clock_t clock() const override { return ticks; }
  void srand(unsigned int seed) const override { seeds.push_back(seed); }
  int rand() const override { return drawn++; }

  std::map<std::pair<Kind, Domain>, QStringList> paths;
  uid_t userId = 1000;
  std::string cache;
  std::size_t cacheLength = 0;
  std::time_t now = 0;
  std::clock_t ticks = 0;
  mutable int askedName = 0;
  mutable std::size_t askedSize = 0;
  mutable std::vector<unsigned int> seeds;
  mutable int drawn = 0;
};

FakePlatform fullPlatform() {
  FakePlatform platform;
  platform.paths = {{{Kind::NSApplicationDirectory, Domain::User}, {"/home/ann/Applications"}},
                    {{Kind::NSApplicationDirectory, Domain::Local}, {"/Applications"}},
                    {{Kind::NSAdminApplicationDirectory, Domain::User}, {"/home/ann/Applications/Utilities"}},
                    {{Kind::NSAdminApplicationDirectory, Domain::Local}, {"/Applications/Utilities"}},
                    {{Kind::NSDocumentDirectory, Domain::User}, {"/home/ann/Documents"}},
                    {{Kind::NSLibraryDirectory, Domain::User}, {"/home/ann/Library", "/second"}},
                    {{Kind::NSLibraryDirectory, Domain::Local}, {"/Library"}},
                    {{Kind::NSLibraryDirectory, Domain::System}, {"/System/Library"}},
                    {{Kind::NSCachesDirectory, Domain::User}, {"/home/ann/Library/Caches"}},
                    {{Kind::NSCachesDirectory, Domain::Local}, {"/Library/Caches"}},
                    {{Kind::NSApplicationSupportDirectory, Domain::User}, {"/home/ann/Library/Application Support"}},
                    {{Kind::NSApplicationSupportDirectory, Domain::Local}, {"/Library/Application Support"}},
                    {{Kind::NSMoviesDirectory, Domain::User}, {"/home/ann/Movies"}},
                    {{Kind::NSDesktopDirectory, Domain::User}, {"/home/ann/Desktop"}},
                    {{Kind::NSDocumentationDirectory, Domain::Local}, {"/Library/Documentation"}}};
  return platform;
}

TEST(QVLocalPaths, NamesEveryFolder) {
  const FakePlatform platform = fullPlatform();
  const struct {
    const char* expected;
    QString path;
  } rows[] = {
      {"/home/ann/Applications", QVLocalPaths::applicationDirectory(true, platform)},
      {"/Applications", QVLocalPaths::applicationDirectory(false, platform)},
      {"/home/ann/Applications/Utilities", QVLocalPaths::adminApplicationDirectory(true, platform)},
      {"/Applications/Utilities", QVLocalPaths::adminApplicationDirectory(false, platform)},
      {"/home/ann/Documents", QVLocalPaths::documentDirectory(true, platform)},
      {"/home/ann/Library", QVLocalPaths::libraryDirectory(true, platform)},
      {"/Library", QVLocalPaths::libraryDirectory(false, platform)},
      {"/home/ann/Library/Preferences", QVLocalPaths::prefsDirectory(true, platform)},
      {"/Library/Preferences", QVLocalPaths::prefsDirectory(false, platform)},
      {"/home/ann/Library/Caches", QVLocalPaths::cacheDirectory(true, platform)},
      {"/Library/Caches", QVLocalPaths::cacheDirectory(false, platform)},
      {"/home/ann/Library/Application Support", QVLocalPaths::appSupportDirectory(true, platform)},
      {"/Library/Application Support", QVLocalPaths::appSupportDirectory(false, platform)},
      {"/home/ann/Library/Logs", QVLocalPaths::logDirectory(true, platform)},
      {"/Library/Logs", QVLocalPaths::logDirectory(false, platform)},
      {"/home/ann/Movies", QVLocalPaths::movieDirectory(platform)},
      {"/home/ann/Desktop", QVLocalPaths::desktopDirectory(platform)},
      {"/home/ann", QVLocalPaths::userDirectory(platform)},
      {"ann", QVLocalPaths::username(platform)},
      {"/System/Library", QVLocalPaths::systemLibraryDirectory(platform)},
      {"/Library/Documentation", QVLocalPaths::localDocumentationDirectory(platform)},
      {"/home/ann/.Trash", QVLocalPaths::trashDirectory(platform)},
      {"/tmp/ann", QVLocalPaths::tempDirectory(platform)},
      {"UNIQUE-1", QVLocalPaths::uuid(platform)},
  };
  for (const auto& row : rows) EXPECT_EQ(row.path, row.expected);
}

TEST(QVLocalPaths, GivesNilWhereThereIsNoFolder) {
  const FakePlatform platform;
  EXPECT_TRUE(QVLocalPaths::pathForDirectory(Kind::NSLibraryDirectory, Domain::User, platform).isNull());
  EXPECT_TRUE(QVLocalPaths::documentDirectory(false, platform).isNull());
  EXPECT_TRUE(QVLocalPaths::prefsDirectory(true, platform).isNull());
  EXPECT_TRUE(QVLocalPaths::logDirectory(false, platform).isNull());
  EXPECT_TRUE(QVLocalPaths::movieDirectory(platform).isNull());
}

TEST(QVLocalPaths, RewritesTheSuperusersFolders) {
  const struct {
    const char *found, *expected;
  } rows[] = {
      {"/var/root/Library", "/home/ann/Library"},
      {"/var/root", "/home/ann"},
      {"/var/rootless", "/home/annless"},
      {"/private/var/root/Library", "/home/annt/Library"},
      {"/private/var/root", "/home/annt"},
      {"/var/root/private/var/root/x", "/home/annt/x"},
      {"/var/root/var/root/x", "/home/ann/var/root/x"},
      {"/private/var/roo", "/home/ann/private/var/roo"},
      {"/elsewhere", "/home/ann/elsewhere"},
      {"", "/home/ann"},
  };
  FakePlatform platform;
  for (const auto& row : rows) {
    platform.paths = {{{Kind::NSLibraryDirectory, Domain::User}, {row.found, "/second"}},
                      {{Kind::NSLibraryDirectory, Domain::Local}, {row.found}},
                      {{Kind::NSLibraryDirectory, Domain::System}, {row.found}}};
    platform.userId = 0;
    EXPECT_EQ(QVLocalPaths::libraryDirectory(true, platform), row.expected) << row.found;
    EXPECT_EQ(QVLocalPaths::libraryDirectory(false, platform), row.found);
    EXPECT_EQ(QVLocalPaths::systemLibraryDirectory(platform), row.found);
    platform.userId = 1;
    EXPECT_EQ(QVLocalPaths::libraryDirectory(true, platform), row.found);
  }
  platform.userId = 0;
  EXPECT_TRUE(QVLocalPaths::documentDirectory(true, platform).isNull());
}

TEST(QVLocalPaths, TakesTheCacheFolderOfTheSystemsConfigurationStrings) {
  FakePlatform platform;
  platform.cache = std::string("/var/folders/x/C/\0", 18);
  platform.cacheLength = 18;
  EXPECT_EQ(QVLocalPaths::darwinCacheDirectory(platform), "/var/folders/x/C/");
  EXPECT_EQ(platform.askedName, 65538);
  EXPECT_EQ(platform.askedSize, 1024U);
  platform.cacheLength = 1;
  EXPECT_EQ(QVLocalPaths::darwinCacheDirectory(platform), "");
  EXPECT_FALSE(QVLocalPaths::darwinCacheDirectory(platform).isNull());
  platform.cacheLength = 0;
  EXPECT_TRUE(QVLocalPaths::darwinCacheDirectory(platform).isNull());
  platform.cache = std::string(4000, 'x');
  platform.cacheLength = 4001;
  EXPECT_EQ(QVLocalPaths::darwinCacheDirectory(platform), QString(1023, 'x'));
}

TEST(QVLocalPaths, DrawsARandomStringFromAFreshSeed) {
  FakePlatform platform;
  platform.now = 70000;
  platform.ticks = 70001;
  EXPECT_EQ(QVLocalPaths::randomString(40, platform), "abcdefghijklmnopqrstuvwxyz0123456789abcd");
  EXPECT_EQ(platform.seeds, std::vector<unsigned int>{static_cast<unsigned int>(70000ULL * 70001ULL)});
  EXPECT_EQ(QVLocalPaths::randomString(0, platform), "");
  EXPECT_FALSE(QVLocalPaths::randomString(0, platform).isNull());
  EXPECT_EQ(platform.seeds.size(), 3U);
}

TEST(QVLocalPaths, DrawsTheSameStringWithinOneTick) {
  class OneTick : public LinuxPathPlatform {
   public:
    OneTick() : LinuxPathPlatform(1000, BundleInfo()) {}
    std::time_t time() const override { return 1794749065; }
    std::clock_t clock() const override { return 12345; }
  };
  const OneTick platform;
  const QString first = QVLocalPaths::randomString(8, platform);
  EXPECT_EQ(QVLocalPaths::randomString(8, platform), first);
  EXPECT_EQ(first.size(), 8);
}

TEST(QVLocalPaths, MakesNamesForTemporaryFiles) {
  FakePlatform platform;
  EXPECT_EQ(QVLocalPaths::tempFile(platform), "/tmp/ann/UNIQUE-1abcdefgh");
  const QString real = QVLocalPaths::tempFile();
  EXPECT_TRUE(real.startsWith(QVLocalPaths::tempDirectory() + "/"));
  EXPECT_NE(real, QVLocalPaths::tempFile());
  EXPECT_EQ(real.count('/'), QVLocalPaths::tempDirectory().count('/') + 1);
  for (const QChar character : real.right(8)) {
    EXPECT_TRUE(QString("abcdefghijklmnopqrstuvwxyz0123456789").contains(character));
  }
}

TEST(QVLocalPaths, GivesANewUniqueStringEachTime) {
  QSet<QString> made;
  for (int i = 0; i < 1000; ++i) made.insert(QVLocalPaths::uuid());
  EXPECT_EQ(made.size(), 1000);
}

TEST(QVLocalPaths, EndsAPathWithOneSlashOrNone) {
  const struct {
    const char *path, *ensured, *stripped;
  } rows[] = {{"", "", ""},      {"/", "/", "/"},         {"a", "a/", "a"},   {"a/", "a/", "a"},
              {"//", "//", "/"}, {"/a//", "/a//", "/a/"}, {"/a", "/a/", "/a"}};
  for (const auto& row : rows) {
    EXPECT_EQ(QVLocalPaths::ensureTrailingSlash(row.path), row.ensured) << row.path;
    EXPECT_EQ(QVLocalPaths::stripTrailingSlash(row.path), row.stripped) << row.path;
  }
  EXPECT_TRUE(QVLocalPaths::ensureTrailingSlash(QString()).isNull());
  EXPECT_TRUE(QVLocalPaths::stripTrailingSlash(QString()).isNull());
}

TEST(QVLocalPaths, KnowsTheSystemsFolders) {
  const FakePlatform platform = fullPlatform();
  const struct {
    const char* path;
    bool loose, exact;
  } rows[] = {
      {"", false, false},
      {"/", true, true},
      {"/u", false, false},
      {"//", false, false},
      {"/usr", true, true},
      {"/usr/", false, false},
      {"/usrx/", true, true},
      {"/usr/share", true, false},
      {"/usr/share/", true, false},
      {"/usr/x/", true, false},
      {"/usr/local", true, false},
      {"/usr/local/", true, false},
      {"/usr/local/bin", false, false},
      {"/usr/local/bin/", false, false},
      {"/usr/locals", true, false},
      {"/var", true, true},
      {"/var/", false, false},
      {"/var/tmp", true, false},
      {"/private/var", false, false},
      {"/private/var/tmp", true, false},
      {"/bin", true, true},
      {"/bin/sh", true, false},
      {"/sbin", true, true},
      {"/sbin/init", true, false},
      {"/System", true, true},
      {"/System/x", true, false},
      {"/system", false, false},
      {"/Users/Shared", true, true},
      {"/Users/Shared/x", false, false},
      {"/home/ann", true, true},
      {"/home/ann/", false, false},
      {"/home/annx/", true, true},
      {"/home/ann/Documents", true, true},
      {"/home/ann/Documents/film", false, false},
      {"/home/ann/Desktop", true, true},
      {"/home/ann/Movies", false, false},
      {"/home/ann/Applications", true, true},
      {"/home/ann/Applications/Utilities", true, true},
      {"/Applications", true, true},
      {"/Applications/Utilities", true, true},
      {"/home/ann/Library", true, true},
      {"/Library", true, true},
      {"/home/ann/Library/Preferences", true, true},
      {"/Library/Preferences", true, true},
      {"/home/ann/Library/Caches", true, true},
      {"/Library/Caches", true, true},
      {"/home/ann/Library/Application Support", true, true},
      {"/Library/Application Support", true, true},
      {"/System/Library", true, true},
      {"/Library/Documentation", true, true},
      {"/home/ann/Library/Logs", false, false},
      {"/home//ann", false, false},
      {"/tmp/../usr", false, false},
      {"usr/share", false, false},
      {"/a/", false, false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(QVLocalPaths::isPathSystemDirectory(row.path, platform), row.loose) << row.path;
    EXPECT_EQ(QVLocalPaths::isPathSystemDirectory(row.path, false, platform), row.loose) << row.path;
    EXPECT_EQ(QVLocalPaths::isPathSystemDirectory(row.path, true, platform), row.exact) << row.path;
  }
  EXPECT_FALSE(QVLocalPaths::isPathSystemDirectory(QString(), platform));
}

TEST(QVLocalPaths, KnowsABackupVolume) {
  const struct {
    const char* path;
    bool backup;
  } rows[] = {{"/Volumes/Backup/Backups.backupdb/mac/2010-01-01", true},
              {"/Volumes/Backup/Backups.backupdb", true},
              {"/Volumes/Backups.backupdb", true},
              {"/Volumes/Backup/Backups.backupdb/", true},
              {"/Backups.backupdb", false},
              {"/Volumes/Backup/backups.backupdb/x", false},
              {"/Volumes/Backup/Backups.backupdb2/x", false},
              {"/Volumes/Backup/xBackups.backupdb/x", false},
              {"/volumes/Backup/Backups.backupdb/x", false},
              {"Volumes/Backup/Backups.backupdb/x", false},
              {"", false}};
  for (const auto& row : rows) EXPECT_EQ(QVLocalPaths::isPathOnTimeMachineVolume(row.path), row.backup) << row.path;
}

}  // namespace
