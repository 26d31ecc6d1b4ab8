#include <QCoreApplication>
#include <QDir>
#include <QRandomGenerator>
#include <atomic>
#include <cerrno>
#include <future>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SharedFiles/files/FileCopy.h"
#include "SharedFiles/files/FileDigest.h"
#include "SharedFiles/tasks/QVTaskEx.h"
#include "system/Descriptor.h"
#include "tests/SharedFiles/EventLoop.h"
#include "tests/SharedFiles/ProcessLog.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/support/FaultyCalls.h"
#include "tests/system/ThreadsRefused.h"

namespace {

using sys::test::FaultyCalls;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Call = FaultyCalls::Call;
using Fault = FaultyCalls::Fault;

constexpr unsigned int sha256 = 3;
const QString smallDisk = "LUMACHECK_COPY_TEST_DISK";

/// Hears of one copy, and knows when nothing more will come.
class CopyReports {
 public:
  FileCopyDelegate delegate() {
    FileCopyDelegate heard;
    heard.fileCopyBytesWritten = [state = state_](quint64 bytes, const QVariantMap& settings) {
      const std::lock_guard guard(state->mutex);
      state->bytes.push_back(bytes);
      state->keep(settings);
    };
    heard.fileCopyVerificationFailed = [state = state_](const QVariantMap& settings, const QString& file) {
      const std::lock_guard guard(state->mutex);
      state->failed.append(file);
      state->failedChecksums.append(settings.value("destChecksum").toString());
    };
    heard.fileCopyFinished = [state = state_](const QVariantMap& settings) {
      const std::lock_guard guard(state->mutex);
      state->keep(settings);
      state->finished = true;
    };
    return heard;
  }
  bool waitForEnd() const {
    return runEventLoopUntil([this] { return state_->finished.load(); });
  }
  std::vector<quint64> bytes() const {
    const std::lock_guard guard(state_->mutex);
    return state_->bytes;
  }
  QStringList failed() const {
    const std::lock_guard guard(state_->mutex);
    return state_->failed;
  }
  /// What stood under "destChecksum" when a destination was told of.
  QStringList failedChecksums() const {
    const std::lock_guard guard(state_->mutex);
    return state_->failedChecksums;
  }
  QVariantMap settings() const {
    const std::lock_guard guard(state_->mutex);
    return state_->settings;
  }
  bool finished() const { return state_->finished; }

 private:
  struct State {
    std::mutex mutex;
    std::vector<quint64> bytes;
    QStringList failed, failedChecksums;
    QVariantMap settings;
    std::atomic<bool> finished = false;

    /// All but the delegate, which holds this state itself.
    void keep(const QVariantMap& told) {
      EXPECT_TRUE(told.contains("delegate"));
      settings = told;
      settings.remove("delegate");
    }
  };
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

class FileCopies : public testing::Test {
 protected:
  QString path(const QString& name) const { return log_.home() + "/" + name; }
  QString put(const QString& name, const QByteArray& bytes) const {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(file.write(bytes), bytes.size());
    return file.fileName();
  }
  static QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
  }
  QString diskOfOneMegabyte(const QString& test) const;
  static QByteArray noise(qsizetype size) {
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(7);
    for (char& byte : bytes) byte = static_cast<char>(generator.generate());
    return bytes;
  }
  bool copy(const QString& source, const QStringList& destinations, unsigned int verification = 0) {
    return copyFileToDestinations({.source = source,
                                   .destinations = destinations,
                                   .verificationType = verification,
                                   .delegate = reports_.delegate()});
  }

  ProcessLog log_;
  CopyReports reports_;
};

TEST_F(FileCopies, FeedEveryDestination) {
  for (const qsizetype size : {0, 1, 65535, 65536, 65537, 300000}) {
    const QByteArray bytes = noise(size);
    const QString source = put("source", bytes);
    EXPECT_TRUE(copy(source, {path("one"), path("two"), path("three")}, sha256));
    for (const char* name : {"one", "two", "three"}) EXPECT_EQ(contents(path(name)), bytes) << name << " of " << size;
  }
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(FileCopies, FailBeforeOpeningAnythingWithoutADestination) {
  EXPECT_FALSE(copy(put("source", "bytes"), {}));
  EXPECT_THAT(log_.entries(), ElementsAre("Error: You must have at least one destination. Aborting copy process..."));
}

TEST_F(FileCopies, FailWithoutASource) {
  EXPECT_FALSE(copy(path("none"), {path("one")}));
  EXPECT_FALSE(QFile::exists(path("one")));
  EXPECT_THAT(log_.entries(), ElementsAre("Error: File " + path("none") + " doesn't exist. Aborting copy process..."));
}

TEST_F(FileCopies, FailWhenTheSourceIsNoFile) {
  EXPECT_FALSE(copy(log_.home(), {path("one")}));
  ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
  EXPECT_FALSE(copy(path("pipe"), {path("one")}));
  EXPECT_THAT(log_.entries(),
              ElementsAre("Error: Unable to read source file " + log_.home() + ". Aborting copy process...",
                          "Error: Unable to read source file " + path("pipe") + ". Aborting copy process..."));
  EXPECT_FALSE(QFile::exists(path("one")));
}

TEST_F(FileCopies, MakeTheFoldersOfTheirDestinations) {
  EXPECT_TRUE(copy(put("source", "bytes"), {path("a/b/one"), path("c/two")}));
  EXPECT_EQ(contents(path("a/b/one")), "bytes");
  EXPECT_EQ(contents(path("c/two")), "bytes");
}

TEST_F(FileCopies, FailWhenAFolderCannotBeMade) {
  const QString source = put("source", "bytes");
  EXPECT_FALSE(copy(source, {path("one"), source + "/below/two"}));
  EXPECT_FALSE(QFile::exists(path("one")));
  EXPECT_EQ(log_.entries().last(), "Unable to copy file " + source + " - destination directory " + source +
                                       "/below doesn't exist. Aborting copy process...");
}

TEST_F(FileCopies, ChangeNothingWhenADestinationCannotBeOpened) {
  const QString source = put("source", "bytes"), existing = put("existing", "precious");
  ASSERT_TRUE(QDir().mkpath(path("folder")));
  EXPECT_FALSE(copy(source, {existing, path("new"), path("folder")}));
  EXPECT_EQ(contents(existing), "precious");
  EXPECT_FALSE(QFile::exists(path("new")));
  EXPECT_THAT(log_.entries(),
              ElementsAre("Error: Unable to open destination file " + path("folder") + ". Aborting copy process..."));
}

TEST_F(FileCopies, NeverOverwriteTheirSource) {
  const QString source = put("source", "precious");
  ASSERT_EQ(::link(QFile::encodeName(source).constData(), QFile::encodeName(path("hard")).constData()), 0);
  ASSERT_EQ(::symlink("source", QFile::encodeName(path("soft")).constData()), 0);
  for (const QString& destination : {source, path("hard"), path("soft"), path("./source")}) {
    EXPECT_FALSE(copy(source, {path("other"), destination})) << destination.toStdString();
    EXPECT_EQ(contents(source), "precious");
    EXPECT_FALSE(QFile::exists(path("other")));
  }
}

TEST_F(FileCopies, RefuseTheSameDestinationTwice) {
  EXPECT_FALSE(copy(put("source", "bytes"), {path("one"), path("./one")}));
  EXPECT_FALSE(QFile::exists(path("one")));
}

TEST_F(FileCopies, OverwriteALongerFile) {
  EXPECT_TRUE(copy(put("source", "short"), {put("existing", noise(100000))}, sha256));
  EXPECT_EQ(contents(path("existing")), "short");
}

TEST_F(FileCopies, TakeNamesAsData) {
  const QString source = put("-rf", "bytes");
  QStringList names;
  for (const char* name : {"a;id", "$(id)", "two\nlines", " blank ", "-n", "grün", "*"}) {
    names.append(path(QString::fromUtf8(name)));
  }
  EXPECT_TRUE(copy(source, names, 1));
  for (const QString& name : names) EXPECT_EQ(contents(name), "bytes");
}

// --- The settings record and the reports ----------------------------------------------------------------------------

TEST_F(FileCopies, RecordTheirSettingsAndChecksums) {
  const QString source = put("source", "abc");
  EXPECT_TRUE(copyFileToDestinations({.source = source,
                                      .destinations = {path("one"), path("two")},
                                      .verificationType = sha256,
                                      .delegate = reports_.delegate(),
                                      .object = "mine",
                                      .object2 = 2}));
  ASSERT_TRUE(reports_.waitForEnd());
  const QVariantMap settings = reports_.settings();
  const QString digest = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
  EXPECT_EQ(settings.value("source"), source);
  EXPECT_EQ(settings.value("destinations").toStringList(), QStringList({path("one"), path("two")}));
  EXPECT_EQ(settings.value("operationtype"), "copy");
  EXPECT_EQ(settings.value("object"), "mine");
  EXPECT_EQ(settings.value("object2"), 2);
  EXPECT_EQ(settings.value("sourceChecksum"), digest);
  EXPECT_EQ(settings.value("destChecksum"), digest);
  EXPECT_EQ(settings.value("destChecksums").toStringList(), QStringList({digest, digest}));
}

TEST_F(FileCopies, LeaveOutOfTheSettingsWhatTheyWereNotGiven) {
  EXPECT_TRUE(copy(put("source", "abc"), {path("one")}));
  ASSERT_TRUE(reports_.waitForEnd());
  for (const char* key : {"object", "object2", "sourceChecksum", "destChecksum", "destChecksums"}) {
    EXPECT_FALSE(reports_.settings().contains(key)) << key;
  }
}

TEST_F(FileCopies, UseTheDigestThatIsAskedFor) {
  const struct {
    unsigned int type;
    const char* digest;
  } rows[] = {
      {1, "900150983cd24fb0d6963f7d28e17f72"},
      {2, "a9993e364706816aba3e25717850c26c9cd0d89d"},
      {3, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {4,
       "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a2192992a274fc1a836ba3c23a3feebbd454d4423643ce80"
       "e"
       "2a9ac94fa54ca49f"},
      {0, ""},
      {5, ""},
      {99, ""},
  };
  for (const auto& row : rows) {
    CopyReports reports;
    EXPECT_TRUE(copyFileToDestinations({.source = put("source", "abc"),
                                        .destinations = {path("one")},
                                        .verificationType = row.type,
                                        .delegate = reports.delegate()}));
    ASSERT_TRUE(reports.waitForEnd());
    EXPECT_EQ(reports.settings().value("destChecksum").toString(), row.digest) << row.type;
  }
}

TEST_F(FileCopies, ReportAboutFiveHundredTimes) {
  const struct {
    qsizetype size;
    std::size_t reports;
  } rows[] = {{0, 1}, {10, 2}, {65536, 2}, {65536 * 40, 41}, {65536 * 1500, 501}};
  for (const auto& row : rows) {
    CopyReports reports;
    const QString source = path("source");
    QFile::remove(source);
    put("source", "");
    ASSERT_EQ(::truncate(QFile::encodeName(source).constData(), row.size), 0);
    EXPECT_TRUE(
        copyFileToDestinations({.source = source, .destinations = {path("one")}, .delegate = reports.delegate()}));
    ASSERT_TRUE(reports.waitForEnd());
    const std::vector<quint64> bytes = reports.bytes();
    EXPECT_EQ(bytes.size(), row.reports) << row.size;
    EXPECT_TRUE(std::is_sorted(bytes.begin(), bytes.end()));
    EXPECT_EQ(bytes.back(), static_cast<quint64>(row.size));
  }
}

// --- What goes wrong on the way -------------------------------------------------------------------------------------

TEST_F(FileCopies, StopWhenTheDelegateRefuses) {
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

TEST_F(FileCopies, GoOnWithoutADestinationThatVanishes) {
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
QString FileCopies::diskOfOneMegabyte(const QString& test) const {
  QString disk = QFile::decodeName(qgetenv(smallDisk.toLatin1().constData()));
  if (disk.isEmpty()) disk = QFile::decodeName(qgetenv("LUMACHECK_SMALL_DISK"));  // where users may mount none
  if (!disk.isEmpty()) return disk;
  EXPECT_TRUE(QDir().mkpath(path("disk")));
  EXPECT_EQ(runOnSmallDisk(test, path("disk")), 0);
  return {};
}

TEST_F(FileCopies, GoOnWithoutADestinationThatFillsUp) {
  const QString disk = diskOfOneMegabyte("FileCopies.GoOnWithoutADestinationThatFillsUp");
  if (disk.isEmpty()) return;
  const QString source = put("source", noise(3 << 20)), full = disk + "/full";
  EXPECT_FALSE(copy(source, {path("one"), full, path("three")}, sha256));
  ASSERT_TRUE(reports_.waitForEnd());
  EXPECT_EQ(contents(path("one")), contents(source));
  EXPECT_EQ(contents(path("three")), contents(source));
  EXPECT_FALSE(QFile::exists(full));
  EXPECT_THAT(log_.entries(), ElementsAre(QString("Error writing file %1: %2").arg(full).arg(ENOSPC)));
}

TEST_F(FileCopies, StopWhenNoDestinationIsLeft) {
  const QString disk = diskOfOneMegabyte("FileCopies.StopWhenNoDestinationIsLeft");
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

TEST_F(FileCopies, WriteWhereTheyMayNotRead) {
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

TEST_F(FileCopies, TellWhyTheSourceCannotBeRead) {
  EXPECT_FALSE(copy("/proc/self/mem", {path("one")}));  // nothing is mapped where it begins
  EXPECT_THAT(log_.entries(), ElementsAre("Error reading file /proc/self/mem - aborting...", "cur pos: 0",
                                          "read size: 0", QString("errno: %1").arg(EIO), "err: 1"));
  EXPECT_FALSE(QFile::exists(path("one")));
}

TEST_F(FileCopies, TellOfASourceInWhichTheyCannotSeek) {
  const QString source = put("source", noise(200000));
  int reads = 0;
  FaultyCalls calls(
      [&reads](Call call, std::size_t) { return Fault{call == Call::Read && ++reads == 3 ? ESPIPE : 0}; });
  EXPECT_FALSE(copyFileToDestinations({.source = source, .destinations = {path("one")}, .calls = calls}));
  EXPECT_FALSE(QFile::exists(path("one")));
  EXPECT_THAT(log_.entries(), ElementsAre("Error: unable to seek within file " + source));
}

TEST_F(FileCopies, GoOnWithoutADestinationInWhichTheyCannotSeek) {
  const QString source = put("source", noise(200000));
  int writes = 0;
  FaultyCalls calls(
      [&writes](Call call, std::size_t) { return Fault{call == Call::Write && ++writes == 3 ? ESPIPE : 0}; });
  EXPECT_FALSE(copyFileToDestinations({.source = source, .destinations = {path("one"), path("two")}, .calls = calls}));
  EXPECT_FALSE(QFile::exists(path("one")));
  EXPECT_EQ(contents(path("two")), contents(source));
  EXPECT_THAT(log_.entries(), ElementsAre("Error: unable to seek within file " + path("one")));
}

TEST_F(FileCopies, SurviveInterruptionsAndShortCounts) {
  const QString source = put("source", noise(200000));
  FaultyCalls calls([](Call, std::size_t number) { return Fault{number % 3 == 0 ? EINTR : 0, number % 3 == 1}; });
  EXPECT_TRUE(copyFileToDestinations({.source = source, .destinations = {path("one"), path("two")}, .calls = calls}));
  EXPECT_EQ(contents(path("one")), contents(source));
  EXPECT_EQ(contents(path("two")), contents(source));
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(FileCopies, AreMadeUnheardWhereTheSystemGivesNoThread) {
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

TEST_F(FileCopies, TellOfADestinationThatDiffersByOneByte) {
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

// --- Attributes -----------------------------------------------------------------------------------------------------

TEST_F(FileCopies, TakeOverModeAndTimes) {
  const QString source = put("source", "bytes");
  const QByteArray name = QFile::encodeName(source);
  ASSERT_EQ(::chmod(name.constData(), 0640), 0);
  const timespec times[] = {{1000000000, 5}, {1200000000, 123456789}};
  ASSERT_EQ(::utimensat(AT_FDCWD, name.constData(), times, 0), 0);
  EXPECT_TRUE(copy(source, {path("one")}));
  struct stat copied {};
  ASSERT_EQ(::stat(QFile::encodeName(path("one")).constData(), &copied), 0);
  EXPECT_EQ(copied.st_mode & 07777, 0640U);
  EXPECT_EQ(copied.st_mtim.tv_sec, 1200000000);
  EXPECT_EQ(copied.st_mtim.tv_nsec, 123456789);
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(FileCopies, GoThroughWhenAttributesCannotBeHad) {
  const QString source = put("source", "bytes");
  FaultyCalls calls([](Call call, std::size_t) { return Fault{call == Call::Times ? EPERM : 0}; });
  EXPECT_TRUE(copyFileToDestinations({.source = source, .destinations = {path("one")}, .calls = calls}));
  EXPECT_EQ(contents(path("one")), "bytes");
  EXPECT_THAT(log_.entries(), ElementsAre("Error setting metadata for file " + path("one") + " - " +
                                          QString::fromStdString(std::generic_category().message(EPERM))));
}

// --- Digests --------------------------------------------------------------------------------------------------------

TEST_F(FileCopies, HashAFile) {
  EXPECT_EQ(digestOfFile(put("file", ""), DigestAlgorithm::md5), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(digestOfFile(put("file", QByteArray(200000, 'a')), DigestAlgorithm::sha1),
            "ec99adda39f462070e2c7ecbc8433e70dc9fb54c");
}

TEST_F(FileCopies, TellOfAFileThatCannotBeHashed) {
  EXPECT_TRUE(digestOfFile(path("none"), DigestAlgorithm::md5).isNull());
  EXPECT_TRUE(digestOfFile(log_.home(), DigestAlgorithm::md5).isNull());
  EXPECT_THAT(log_.entries(),
              ElementsAre("Error: Unable to open destination file " + path("none") + ". Aborting hash verification...",
                          "Error reading file " + log_.home() + " - aborting..."));
}

/// Whether, in the end, nobody holds what a delegate holds but so many here: then it is called no more.
bool isLetGo(const std::shared_ptr<std::atomic<int>>& held, long holders = 1) {
  return runEventLoopUntil([&] { return held.use_count() == holders; });
}

TEST_F(FileCopies, StopHashingWhenTheDelegateRefuses) {
  const QString source = put("source", "");
  ASSERT_EQ(::truncate(QFile::encodeName(source).constData(), qsizetype{64} << 30), 0);
  const auto asked = std::make_shared<std::atomic<int>>(0);
  EXPECT_TRUE(digestOfFile(source, DigestAlgorithm::sha256, [asked] { return ++*asked < 3; }).isNull());
  ASSERT_TRUE(isLetGo(asked));
  EXPECT_EQ(*asked, 3) << "who has refused is asked no more";
}

TEST_F(FileCopies, AskAfterEachBlockWhetherHashingShouldGoOn) {
  constexpr int blocks = 60;
  const QString source = put("source", noise((blocks - 1) * 65536 + 1));
  const auto asked = std::make_shared<std::atomic<int>>(0);
  std::promise<void> returned;
  const std::shared_future<void> end = returned.get_future();
  const auto slowly = [asked, end] {
    end.wait();
    return ++*asked > 0;
  };
  EXPECT_FALSE(digestOfFile(source, DigestAlgorithm::md5, slowly).isNull());
  EXPECT_EQ(*asked, 0) << "nobody waits for the answer";
  returned.set_value();
  // The delegate here holds it, too.
  ASSERT_TRUE(isLetGo(asked, 2));
  EXPECT_EQ(*asked, blocks);
}

}  // namespace
