#include <QDir>
#include <algorithm>
#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/files/FileCopies.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

}  // namespace
