// Homes that are not as they should be: the program starts, is used and ends all the same.

#include <QDir>
#include <QFile>
#include <csignal>
#include <string>

#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/WindowFixture.h"
#include "tests/app/program/ProgramFixture.h"
#include "tests/support/SmallDisk.h"

namespace {

class Homes : public ProgramFixture {
 protected:
  /// The superuser's folders lie below the home, whatever they are named.
  QString dataFolder() const { return (::getuid() == 0 ? path("home") : QString()) + path("elsewhere/data"); }
  void startUseAndEnd() {
    start({plainMovie(), retaggedMovie()});
    EXPECT_TRUE(waitUntil([this] { return tell("text Source: path") == plainMovie().toUtf8(); }));
    EXPECT_TRUE(choose("preferences"));
    EXPECT_TRUE(waitForDialog("Preferences"));
    EXPECT_TRUE(press("Send anonymous usage data to Quorvane"));
    EXPECT_TRUE(press("Close"));
    EXPECT_TRUE(choose("check"));
    EXPECT_TRUE(waitUntil([this] { return tell("report").contains("Checking files..."); }));
    EXPECT_EQ(tell("close"), "yes");
    EXPECT_EQ(ended(), 0) << running_.readAll().toStdString();
  }
};

TEST_F(Homes, MayNotBeThere) {
  environment_.insert("HOME", "/proc/self/nowhere");  // nobody can make anything there, not even the superuser
  startUseAndEnd();
}

TEST_F(Homes, MayBeAFile) {
  put(path("file"), "text");
  environment_.insert("HOME", path("file"));
  startUseAndEnd();
  EXPECT_EQ(contentOf(path("file")), "text");
}

TEST_F(Homes, MayBeUnnamedWhereTheFoldersAreNamed) {
  if (::getuid() != 0) environment_.remove("HOME");
  environment_.insert("XDG_DATA_HOME", path("elsewhere/data"));
  environment_.insert("XDG_CACHE_HOME", path("elsewhere/cache"));
  environment_.insert("XDG_CONFIG_HOME", path("elsewhere/config"));
  startUseAndEnd();
  EXPECT_THAT(filesBelow(dataFolder()),
              testing::IsSupersetOf({QString("quorvane/Preferences/com.quorvane.Lumacheck.plist"),
                                     QString("quorvane/Preferences/com.quorvane.qc.plist")}));
}

TEST_F(Homes, LendTheirFoldersToNobodyWhereOthersAreNamed) {
  environment_.insert("XDG_DATA_HOME", path("elsewhere/data"));
  environment_.insert("XDG_CACHE_HOME", path("elsewhere/cache"));
  startUseAndEnd();
  EXPECT_FALSE(QFile::exists(library({})));
  EXPECT_THAT(filesBelow(dataFolder()),
              testing::Contains(QString("quorvane/Preferences/com.quorvane.Lumacheck.plist")));
  if (::getuid() != 0) {
    EXPECT_THAT(filesBelow(path("home")), testing::IsEmpty());
    EXPECT_THAT(filesBelow(dataFolder()), testing::Contains(QString("quorvane/Logs/Quorvane/Lumacheck.1.log")));
  }
}

TEST_F(Homes, AreNotTheWorkingFolderWhereTheirPathIsRelative) {
  environment_.insert("XDG_DATA_HOME", "relative");
  startUseAndEnd();
  EXPECT_FALSE(QFile::exists(path("home/relative")));
  EXPECT_TRUE(QFile::exists(defaultsFile()));
}

TEST_F(Homes, MayBeFull) {
  movie::test::onSmallDisk("a home on a full disk", [this](const std::string& folder) {
    movie::test::fillDisk(folder + "/all of it");
    environment_.insert("HOME", QString::fromStdString(folder));
    startUseAndEnd();
  });
}

}  // namespace
