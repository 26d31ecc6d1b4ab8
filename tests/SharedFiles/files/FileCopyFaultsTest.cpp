#include <QCoreApplication>
#include <QDir>
#include <atomic>
#include <cerrno>
#include <memory>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SharedFiles/files/FileDigest.h"
#include "SharedFiles/tasks/QVTaskEx.h"
#include "system/Descriptor.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/files/FileCopies.h"
#include "tests/support/FaultyCalls.h"
#include "tests/system/ThreadsRefused.h"

namespace {

using sys::test::FaultyCalls;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Call = FaultyCalls::Call;
using Fault = FaultyCalls::Fault;

const QString smallDisk = "LUMACHECK_COPY_TEST_DISK";

/// What goes wrong on the way.
class FileCopyFaults : public FileCopies {
 protected:
  QString diskOfOneMegabyte(const QString& test) const;
};

/// Runs this program's one test again where the folder is a disk of 1 MB that nobody else sees.
int runOnSmallDisk(const QString& test, const QString& folder) {
  QStringList own{"--mount"};
  if (::geteuid() != 0) own += {"--user", "--map-current-user", "--keep-caps"};
  const QString mount = "mount -t tmpfs -o size=1m none \"$0\" && exec \"$@\"";
  return QVTaskEx::terminationCodeFromTask(
      "/usr/bin/unshare", own + QStringList{"/bin/sh", "-c", mount, folder, "/usr/bin/env", smallDisk + ("=" + folder),
                                            QCoreApplication::applicationFilePath(), "--gtest_filter=" + test});
}

/// The folder of such a disk; empty when the test was run there, in a process of its own.
QString FileCopyFaults::diskOfOneMegabyte(const QString& test) const {
  QString disk = QFile::decodeName(qgetenv(smallDisk.toLatin1().constData()));
  if (disk.isEmpty()) disk = QFile::decodeName(qgetenv("LUMACHECK_SMALL_DISK"));  // where users may mount none
  if (!disk.isEmpty()) return disk;
  EXPECT_TRUE(QDir().mkpath(path("disk")));
  EXPECT_EQ(runOnSmallDisk(test, path("disk")), 0);
  return {};
}

TEST_F(FileCopyFaults, StopWhenTheDelegateRefuses) {
  const QString source = put("source", "");
  ASSERT_EQ(::truncate(QFile::encodeName(source).constData(), qsizetype{4} << 30), 0);
  std::atomic<int> asked = 0;
  FileCopyDelegate delegate = reports_.delegate();
  delegate.fileCopyShouldContinue = [&asked](const QVariantMap& /*settings*/) { return ++asked < 3; };
  EXPECT_FALSE(
      copyFileToDestinations({.source = source, .destinations = {path("one"), path("two")}, .delegate = delegate}));
  EXPECT_FALSE(QFile::exists(path("one")));
  EXPECT_FALSE(QFile::exists(path("two")));
  EXPECT_FALSE(reports_.finished());
  const quint64 heard = asked >= 3 ? 1 : 0;
  EXPECT_EQ(heard, 1U);
  runEventLoopUntil([] { return false; }, 100);  // what was asked meanwhile still gets its answer
}

TEST_F(FileCopyFaults, GoOnWithoutADestinationThatVanishes) {
  const QString source = put("source", noise(40 << 20));
  std::atomic<bool> done = false, removed = false;
  std::thread vandal([this, &done, &removed] {
    while (!done && !removed) removed = ::unlink(QFile::encodeName(path("two")).constData()) == 0;
  });
  const bool copied = copy(source, {path("one"), path("two"), path("three")}, sha256);
  done = true;
  vandal.join();
  ASSERT_TRUE(reports_.waitForEnd());
  EXPECT_TRUE(removed);
  EXPECT_FALSE(copied);
  EXPECT_EQ(contents(path("one")), contents(source));
  EXPECT_EQ(contents(path("three")), contents(source));
  EXPECT_FALSE(QFile::exists(path("two")));
  EXPECT_THAT(log_.entries(), ElementsAre("Error: copied file size does not match original source " + source));
  const QStringList sums = reports_.settings().value("destChecksums").toStringList();
  EXPECT_EQ(sums, QStringList({sums[0], QString(), sums[0]}));
  EXPECT_THAT(reports_.failed(), IsEmpty());
}

TEST_F(FileCopyFaults, GoOnWithoutADestinationThatFillsUp) {
  const QString disk = diskOfOneMegabyte("FileCopyFaults.GoOnWithoutADestinationThatFillsUp");
  if (disk.isEmpty()) return;
  const QString source = put("source", noise(3 << 20)), full = disk + "/full";
  EXPECT_FALSE(copy(source, {path("one"), full, path("three")}, sha256));
  ASSERT_TRUE(reports_.waitForEnd());
  EXPECT_EQ(contents(path("one")), contents(source));
  EXPECT_EQ(contents(path("three")), contents(source));
  EXPECT_FALSE(QFile::exists(full));
  EXPECT_THAT(log_.entries(), ElementsAre(QString("Error writing file %1: %2").arg(full).arg(ENOSPC)));
}

TEST_F(FileCopyFaults, StopWhenNoDestinationIsLeft) {
  const QString disk = diskOfOneMegabyte("FileCopyFaults.StopWhenNoDestinationIsLeft");
  if (disk.isEmpty()) return;
  const QString source = put("source", ""), full = disk + "/full";
  constexpr off_t size = off_t{3} << 30;
  ASSERT_EQ(::truncate(QFile::encodeName(source).constData(), size), 0);
  EXPECT_FALSE(copy(source, {full}));
  runEventLoopUntil([] { return false; }, 100);
  EXPECT_LE(reports_.bytes().empty() ? 0 : reports_.bytes().back(), 1U << 20) << "more than the disk took";
  EXPECT_FALSE(reports_.finished());
  EXPECT_FALSE(QFile::exists(full));
  EXPECT_THAT(log_.entries(), ElementsAre(QString("Error writing file %1: %2").arg(full).arg(ENOSPC)));
}

TEST_F(FileCopyFaults, WriteWhereTheyMayNotRead) {
  if (::geteuid() == 0) GTEST_SKIP() << "may read everything";
  const QString source = put("source", "bytes");
  for (const char* name : {"one", "two"}) {
    put(name, "older");
    ASSERT_EQ(::chmod(QFile::encodeName(path(name)).constData(), 0200), 0);
  }
  EXPECT_TRUE(copyFileToDestinations({.source = source, .destinations = {path("one")}}));
  EXPECT_EQ(contents(path("one")), "bytes");
  EXPECT_FALSE(copy(source, {path("two")}, sha256));
  ASSERT_TRUE(reports_.waitForEnd());
  EXPECT_THAT(reports_.failed(), ElementsAre(path("two")));
  EXPECT_THAT(log_.entries(),
              ElementsAre("Error: Unable to open destination file " + path("two") + ". Aborting hash verification..."));
}

TEST_F(FileCopyFaults, TellWhyTheSourceCannotBeRead) {
  EXPECT_FALSE(copy("/proc/self/mem", {path("one")}));  // nothing is mapped where it begins
  EXPECT_THAT(log_.entries(), ElementsAre("Error reading file /proc/self/mem - aborting...", "cur pos: 0",
                                          "read size: 0", QString("errno: %1").arg(EIO), "err: 1"));
  EXPECT_FALSE(QFile::exists(path("one")));
}

TEST_F(FileCopyFaults, TellOfASourceInWhichTheyCannotSeek) {
  const QString source = put("source", noise(200000));
  int reads = 0;
  FaultyCalls calls(
      [&reads](Call call, std::size_t) { return Fault{call == Call::Read && ++reads == 3 ? ESPIPE : 0}; });
  EXPECT_FALSE(copyFileToDestinations({.source = source, .destinations = {path("one")}, .calls = calls}));
  EXPECT_FALSE(QFile::exists(path("one")));
  EXPECT_THAT(log_.entries(), ElementsAre("Error: unable to seek within file " + source));
}

TEST_F(FileCopyFaults, GoOnWithoutADestinationInWhichTheyCannotSeek) {
  const QString source = put("source", noise(200000));
  int writes = 0;
  FaultyCalls calls(
      [&writes](Call call, std::size_t) { return Fault{call == Call::Write && ++writes == 3 ? ESPIPE : 0}; });
  EXPECT_FALSE(copyFileToDestinations({.source = source, .destinations = {path("one"), path("two")}, .calls = calls}));
  EXPECT_FALSE(QFile::exists(path("one")));
  EXPECT_EQ(contents(path("two")), contents(source));
  EXPECT_THAT(log_.entries(), ElementsAre("Error: unable to seek within file " + path("one")));
}

TEST_F(FileCopyFaults, SurviveInterruptionsAndShortCounts) {
  const QString source = put("source", noise(200000));
  FaultyCalls calls([](Call, std::size_t number) { return Fault{number % 3 == 0 ? EINTR : 0, number % 3 == 1}; });
  EXPECT_TRUE(copyFileToDestinations({.source = source, .destinations = {path("one"), path("two")}, .calls = calls}));
  EXPECT_EQ(contents(path("one")), contents(source));
  EXPECT_EQ(contents(path("two")), contents(source));
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(FileCopyFaults, AreMadeUnheardWhereTheSystemGivesNoThread) {
  const QString source = put("source", "abc");
  const auto asked = std::make_shared<std::atomic<int>>(0);
  const ThreadsRefused refused;
  EXPECT_TRUE(copy(source, {path("one")}, sha256));
  EXPECT_EQ(contents(path("one")), "abc");
  EXPECT_TRUE(reports_.bytes().empty());
  EXPECT_EQ(digestOfFile(source, DigestAlgorithm::md5, [asked] { return ++*asked < 0; }),
            "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(*asked, 0);
}

TEST_F(FileCopyFaults, TellOfADestinationThatDiffersByOneByte) {
  const QString source = put("source", noise(40 << 20));
  std::atomic<bool> done = false;
  std::atomic<int> flips = 0;
  const char other = static_cast<char>(~contents(source).at(0));
  std::thread vandal([this, &done, &flips, other] {
    const QByteArray name = QFile::encodeName(path("two"));
    while (!done) {
      const sys::Descriptor file(::open(name.constData(), O_WRONLY | O_CLOEXEC));
      struct stat now {};
      while (!done && file.isOpen() && ::fstat(file.get(), &now) == 0) {
        if (now.st_size > 65536 && ::pwrite(file.get(), &other, 1, 0) == 1) ++flips;
        ::usleep(200);
      }
    }
  });
  const bool copied = copy(source, {path("one"), path("two"), path("three")}, sha256);
  done = true;
  vandal.join();
  ASSERT_TRUE(reports_.waitForEnd());
  EXPECT_GT(flips, 0);
  EXPECT_FALSE(copied);
  EXPECT_THAT(reports_.failed(), ElementsAre(path("two")));
  const QStringList sums = reports_.settings().value("destChecksums").toStringList();
  EXPECT_THAT(reports_.failedChecksums(), ElementsAre(sums[1]));
  EXPECT_EQ(sums[0], reports_.settings().value("sourceChecksum"));
  EXPECT_NE(sums[1], sums[0]);
  EXPECT_EQ(contents(path("one")), contents(source));
  EXPECT_TRUE(QFile::exists(path("two"))) << "kept, to be looked at";
}

TEST_F(FileCopyFaults, GoThroughWhenAttributesCannotBeHad) {
  const QString source = put("source", "bytes");
  FaultyCalls calls([](Call call, std::size_t) { return Fault{call == Call::Times ? EPERM : 0}; });
  EXPECT_TRUE(copyFileToDestinations({.source = source, .destinations = {path("one")}, .calls = calls}));
  EXPECT_EQ(contents(path("one")), "bytes");
  EXPECT_THAT(log_.entries(), ElementsAre("Error setting metadata for file " + path("one") + " - " +
                                          QString::fromStdString(std::generic_category().message(EPERM))));
}

}  // namespace
