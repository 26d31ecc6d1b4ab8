// What the window says where there is no room on the disk.

#include <QDir>
#include <QFile>
#include <csignal>

#include <gtest/gtest.h>

#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/WindowFixture.h"
#include "tests/app/program/ProgramFixture.h"
#include "tests/support/MovieFixture.h"
#include "tests/support/SmallDisk.h"

namespace {

class FullDisk : public ProgramFixture {
 protected:
  /// Small, and without tags. Its index is larger than what the last page of a file can take.
  static QString untaggedMovie() {
    return QString::fromStdString(movie::test::fixtureMovie(
        "untagged.mov", {"-f", "lavfi", "-i", "testsrc2=size=16x16:rate=25:duration=40", "-c:v", "png"}));
  }
  /// Opens the movie from the disk, syncs it, and takes all the room that is left.
  void syncAndFill(const QString& disk) {
    const QString dest = disk + "/dest.mov";
    ASSERT_TRUE(QFile::copy(untaggedMovie(), dest));
    ASSERT_TRUE(QFile::setPermissions(dest, QFile::ReadOwner | QFile::WriteOwner));
    start({plainMovie(), dest});
    ASSERT_TRUE(waitUntil([&] { return tell("text Destination: path") == dest.toUtf8(); }));
    ASSERT_TRUE(choose("sync"));
    ASSERT_TRUE(waitForDialog("Metadata sync complete"));
    ASSERT_TRUE(press("OK"));
    ASSERT_TRUE(waitUntil([this] { return dialogs().isEmpty(); }));
    movie::test::fillDisk((disk + "/all of it").toStdString());
  }
  bool waitUntilSaid(const char* message) {
    return waitUntil([&] { return tell("text Message") == message; });
  }
};

TEST_F(FullDisk, IsToldOfByASave) {
  movie::test::onSmallDisk("a save on a full disk", [this](const std::string& folder) {
    const QString disk = QDir::cleanPath(QString::fromStdString(folder));
    syncAndFill(disk);
    const QByteArray before = contentOf(disk + "/dest.mov");
    EXPECT_TRUE(choose("save"));
    EXPECT_TRUE(
        waitUntilSaid("\"dest.mov\" was not saved: the disk is full (reserving room). "
                      "The movie on the disk is as it was."))
        << tell("text Message").toStdString();
    EXPECT_EQ(contentOf(disk + "/dest.mov"), before);
    EXPECT_TRUE(QFile::remove(disk + "/all of it"));
    EXPECT_TRUE(choose("save"));
    EXPECT_TRUE(waitUntil([this] { return tell("text Message").startsWith("Saved \"dest.mov\" in "); }))
        << "the changes were still there";
    EXPECT_EQ(endWith(SIGTERM), 0);
  });
}

TEST_F(FullDisk, IsToldOfByACopy) {
  movie::test::onSmallDisk("a copy on a full disk", [this](const std::string& folder) {
    const QString disk = QDir::cleanPath(QString::fromStdString(folder));
    syncAndFill(disk);
    EXPECT_TRUE(choose("saveAs"));
    EXPECT_TRUE(waitForDialog("Save the destination as"));
    EXPECT_EQ(tell("answer " + disk + "/copy.mov"), "yes");
    EXPECT_TRUE(
        waitUntilSaid("The copy \"copy.mov\" was not saved: there is not enough space on the disk. "
                      "Nothing was left behind."))
        << tell("text Message").toStdString();
    EXPECT_EQ(filesBelow(disk), (QStringList{"all of it", "dest.mov"}));
    EXPECT_EQ(endWith(SIGTERM), 0);
  });
}

}  // namespace
