#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <unistd.h>

#include "SharedFiles/foundation/PathPlatform.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "tests/SharedFiles/EnvironmentGuard.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

using Kind = SearchPathDirectory;
using Domain = SearchPathDomain;

class LinuxPaths : public ::testing::Test {
 protected:
  LinuxPaths() {
    for (const char* variable : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "TMPDIR"}) {
      environment_.clear(variable);
    }
    environment_.set("HOME", "/home/ann");
  }
  EnvironmentGuard environment_;
  BundleInfo bundle_{{}, "/opt/lumacheck/bin/lumacheck"};
  LinuxPathPlatform platform_{1000, bundle_};
};

TEST_F(LinuxPaths, FollowTheHomeFolder) {
  EXPECT_EQ(QVLocalPaths::userDirectory(platform_), "/home/ann");
  EXPECT_EQ(QVLocalPaths::libraryDirectory(true, platform_), "/home/ann/.local/share/quorvane");
  EXPECT_EQ(QVLocalPaths::prefsDirectory(true, platform_), "/home/ann/.local/share/quorvane/Preferences");
  EXPECT_EQ(QVLocalPaths::logDirectory(true, platform_), "/home/ann/.local/share/quorvane/Logs");
  EXPECT_EQ(QVLocalPaths::appSupportDirectory(true, platform_), "/home/ann/.local/share/quorvane/Application Support");
  EXPECT_EQ(QVLocalPaths::cacheDirectory(true, platform_), "/home/ann/.cache");
  EXPECT_EQ(QVLocalPaths::applicationDirectory(true, platform_), "/home/ann/Applications");
  EXPECT_EQ(QVLocalPaths::adminApplicationDirectory(true, platform_), "/home/ann/Applications/Utilities");
  EXPECT_EQ(QVLocalPaths::trashDirectory(platform_), "/home/ann/.Trash");
  EXPECT_EQ(QVLocalPaths::documentDirectory(true, platform_), "/home/ann/Documents");
  EXPECT_EQ(QVLocalPaths::desktopDirectory(platform_), "/home/ann/Desktop");
  EXPECT_EQ(QVLocalPaths::movieDirectory(platform_), "/home/ann/Videos");
}

TEST_F(LinuxPaths, FollowTheXdgVariables) {
  environment_.set("XDG_DATA_HOME", "/data/");
  environment_.set("XDG_CACHE_HOME", "/fast//cache");
  EXPECT_EQ(QVLocalPaths::libraryDirectory(true, platform_), "/data/quorvane");
  EXPECT_EQ(QVLocalPaths::appSupportDirectory(true, platform_), "/data/quorvane/Application Support");
  EXPECT_EQ(QVLocalPaths::cacheDirectory(true, platform_), "/fast/cache");
}

TEST_F(LinuxPaths, IgnoreVariablesThatAreNoAbsolutePaths) {
  environment_.set("XDG_DATA_HOME", "relative");
  environment_.set("XDG_CACHE_HOME", "");
  environment_.set("TMPDIR", "tmp");
  EXPECT_EQ(QVLocalPaths::libraryDirectory(true, platform_), "/home/ann/.local/share/quorvane");
  EXPECT_EQ(QVLocalPaths::cacheDirectory(true, platform_), "/home/ann/.cache");
  EXPECT_EQ(QVLocalPaths::tempDirectory(platform_), "/tmp");
  environment_.set("TMPDIR", "/scratch/");
  EXPECT_EQ(QVLocalPaths::tempDirectory(platform_), "/scratch");
}

TEST_F(LinuxPaths, FollowTheUsersFolders) {
  const QTemporaryDir config;
  QFile file(config.path() + "/user-dirs.dirs");
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\nXDG_DESKTOP_DIR=\"/desk\"\nXDG_VIDEOS_DIR=\"$HOME/Filme\"\n");
  file.close();
  environment_.set("XDG_CONFIG_HOME", QFile::encodeName(config.path()));
  EXPECT_EQ(QVLocalPaths::documentDirectory(true, platform_), "/home/ann/Dokumente");
  EXPECT_EQ(QVLocalPaths::desktopDirectory(platform_), "/desk");
  EXPECT_EQ(QVLocalPaths::movieDirectory(platform_), "/home/ann/Filme");
}

TEST_F(LinuxPaths, NameTheMachinesFolders) {
  EXPECT_EQ(QVLocalPaths::libraryDirectory(false, platform_), "/opt/lumacheck/share/quorvane");
  EXPECT_EQ(QVLocalPaths::appSupportDirectory(false, platform_), "/opt/lumacheck/share/quorvane/Application Support");
  EXPECT_EQ(QVLocalPaths::prefsDirectory(false, platform_), "/opt/lumacheck/share/quorvane/Preferences");
  EXPECT_EQ(QVLocalPaths::logDirectory(false, platform_), "/opt/lumacheck/share/quorvane/Logs");
  EXPECT_EQ(QVLocalPaths::cacheDirectory(false, platform_), "/var/cache");
  EXPECT_EQ(QVLocalPaths::applicationDirectory(false, platform_), "/opt");
  EXPECT_EQ(QVLocalPaths::adminApplicationDirectory(false, platform_), "/opt/Utilities");
  EXPECT_EQ(QVLocalPaths::localDocumentationDirectory(platform_), "/usr/share/doc");
  EXPECT_EQ(QVLocalPaths::systemLibraryDirectory(platform_), "/usr/lib");
  EXPECT_TRUE(QVLocalPaths::documentDirectory(false, platform_).isNull());
  EXPECT_TRUE(QVLocalPaths::darwinCacheDirectory(platform_).isNull());
  EXPECT_TRUE(QVLocalPaths::pathForDirectory(Kind::NSDesktopDirectory, Domain::Local, platform_).isNull());
  EXPECT_TRUE(QVLocalPaths::pathForDirectory(Kind::NSMoviesDirectory, Domain::Local, platform_).isNull());
  EXPECT_TRUE(QVLocalPaths::pathForDirectory(Kind::NSDocumentationDirectory, Domain::User, platform_).isNull());
  EXPECT_TRUE(QVLocalPaths::pathForDirectory(Kind::NSCachesDirectory, Domain::System, platform_).isNull());
  const LinuxPathPlatform bare(1000, BundleInfo{});
  EXPECT_TRUE(QVLocalPaths::libraryDirectory(false, bare).isNull());
  EXPECT_TRUE(QVLocalPaths::appSupportDirectory(false, bare).isNull());
}

TEST_F(LinuxPaths, FindTheSuperusersFoldersBelowTheHomeFolder) {
  const LinuxPathPlatform root(0, bundle_);
  for (const char* home : {"/home/ann", "/root", "/", "/srv/root"}) {
    environment_.set("HOME", home);
    const QString prefix = QString(home) == "/" ? QString() : QString(home);
    EXPECT_EQ(QVLocalPaths::libraryDirectory(true, root), prefix + "/.local/share/quorvane");
    EXPECT_EQ(QVLocalPaths::cacheDirectory(true, root), prefix + "/.cache");
    EXPECT_EQ(QVLocalPaths::documentDirectory(true, root), prefix + "/Documents");
    EXPECT_EQ(QVLocalPaths::applicationDirectory(true, root), prefix + "/Applications");
  }
  environment_.set("HOME", "/home/ann");
  EXPECT_EQ(root.searchPaths(Kind::NSCachesDirectory, Domain::User), QStringList("/var/root/.cache"));
  environment_.set("XDG_CACHE_HOME", "/home/anna/cache");
  EXPECT_EQ(QVLocalPaths::cacheDirectory(true, root), "/home/ann/home/anna/cache");
  EXPECT_EQ(QVLocalPaths::cacheDirectory(false, root), "/var/cache");
}

TEST_F(LinuxPaths, TakeTheHomeFolderOfTheAccountWithoutHome) {
  environment_.clear("HOME");
  const LinuxPathPlatform root(0, bundle_);
  EXPECT_EQ(QVLocalPaths::userDirectory(root), "/root");
  EXPECT_EQ(QVLocalPaths::username(root), "root");
  EXPECT_EQ(QVLocalPaths::documentDirectory(true, root), "/root/Documents");
  EXPECT_EQ(QVLocalPaths::cacheDirectory(true, root), "/root/.cache");
  environment_.set("LOGNAME", "nobody-knows");
  const LinuxPathPlatform nobody(4000000000U, bundle_);
  EXPECT_EQ(QVLocalPaths::userDirectory(nobody), "/");
  EXPECT_EQ(QVLocalPaths::username(nobody), "nobody-knows");
}

TEST(StandardPaths, BelongToTheRunningUser) {
  EXPECT_EQ(PathPlatform::standard().realUserId(), getuid());
  EXPECT_TRUE(QVLocalPaths::libraryDirectory(false).endsWith("/share/quorvane"));
  EXPECT_TRUE(QVLocalPaths::isPathSystemDirectory("/usr", true));
  EXPECT_TRUE(QVLocalPaths::isPathSystemDirectory("/usr/share"));
}

}  // namespace
