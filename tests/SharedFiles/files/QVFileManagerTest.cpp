#include <chrono>
#include <cmath>
#include <limits>
#include <thread>

#include <fcntl.h>

#include "tests/SharedFiles/files/FileFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(FileSizes, AreTextWithTheLargestUnitThatLeavesAtLeastOne) {
  const std::vector<std::pair<double, QString>> rows = {
      {0, "0 B"},
      {1, "1 B"},
      {-5, "-5 B"},
      {1023, "1023 B"},
      {1024, "1.00 KB"},
      {1536, "1.50 KB"},
      {1048575, "1024.00 KB"},
      {1048576, "1.00 MB"},
      {1073741823, "1024.00 MB"},
      {1073741824, "1.00 GB"},
      {2.5 * 1073741824, "2.50 GB"},
      {1099511627775, "1024.00 GB"},
      {1099511627776, "1.00 TB"},
      {5000.0 * 1099511627776, "5000.00 TB"},
      {std::numeric_limits<double>::infinity(), "inf TB"},
  };
  for (const auto& [size, text] : rows) EXPECT_EQ(QVFileManager::formatFileSize(size), text);
}

TEST(ValidFileNames, LoseADotAtTheFrontBlanksAtTheEndsAndSeparators) {
  const std::vector<std::pair<QString, QString>> rows = {
      {".hidden", "hidden"},
      {"a/b:c", "abc"},
      {".", ""},
      {"", ""},
      {"..", "."},
      {"..x", ".x"},
      {" name \n", "name"},
      {"\r\n\tname", "name"},
      {". name", "name"},
      {" .name", ".name"},
      {"a b", "a b"},
      {"/", ""},
      {"::", ""},
      {"-rf", "-rf"},
      {"$(id)", "$(id)"},
      {QString(QChar(0x3000)) + "x", "x"},
      {"a\nb", "a\nb"},
  };
  for (const auto& [name, valid] : rows) EXPECT_EQ(QVFileManager::validateFilename(name), valid);
}

class FileNames : public FileFixture {};

TEST_F(FileNames, ThatAreFreeStayAsTheyAre) {
  EXPECT_EQ(QVFileManager::uniqueFilename(path("clip.mov")), path("clip.mov"));
  EXPECT_EQ(QVFileManager::uniqueFilename(path("missing/clip.mov")), path("missing/clip.mov"));
}

TEST_F(FileNames, ThatAreTakenGetTheFirstFreeNumberBeforeTheirExtension) {
  const std::vector<std::pair<QString, QString>> rows = {
      {"clip.mov", "clip 2.mov"}, {"name", "name 2"},   {".hidden", ".hidden 2"},
      {"a.tar.gz", "a.tar 2.gz"}, {"end.", "end. 2"},   {".hidden.mov", ".hidden 2.mov"},
      {"-rf", "-rf 2"},           {"%1 %2", "%1 %2 2"}, {"a b.c", "a b 2.c"},
  };
  for (const auto& [name, next] : rows) {
    EXPECT_EQ(QVFileManager::uniqueFilename(write(name)), path(next));
  }
  write("clip 2.mov");
  EXPECT_EQ(QVFileManager::uniqueFilename(path("clip.mov")), path("clip 3.mov"));
  makeFolder("v1.0/name");
  EXPECT_EQ(QVFileManager::uniqueFilename(path("v1.0/name")), path("v1.0/name 2"));
  EXPECT_EQ(QVFileManager::uniqueFilename(path("v1.0/name/")), path("v1.0/name 2"));
}

TEST_F(FileNames, AreTakenByALinkThatLeadsNowhere) {
  EXPECT_EQ(QVFileManager::uniqueFilename(makeLink("link.mov", "nowhere")), path("link 2.mov"));
}

TEST_F(FileNames, ExistWhenSomethingIsThereOrWhereTheLinkLeads) {
  write("file");
  EXPECT_TRUE(QVFileManager::fileExistsAtPath(path("file")));
  EXPECT_TRUE(QVFileManager::fileExistsAtPath(log_.home() + "/"));
  EXPECT_TRUE(QVFileManager::fileExistsAtPath(makeLink("link", "file")));
  EXPECT_FALSE(QVFileManager::fileExistsAtPath(makeLink("dangling", "nowhere")));
  EXPECT_FALSE(QVFileManager::fileExistsAtPath(path("missing")));
  EXPECT_FALSE(QVFileManager::fileExistsAtPath(""));
  EXPECT_FALSE(QVFileManager::fileExistsAtPath({}));
}

TEST_F(FileNames, ThatAreNoTextAreRefusedWithALogLine) {
  EXPECT_FALSE(QVFileManager::fileExistsAtPath(path(QString(QChar(0xD800)))));
  EXPECT_FALSE(QVFileManager::fileExistsAtPath(path(QString("a") + QChar(0) + "b")));
  ASSERT_EQ(log_.entries().size(), 2);
  for (const QString& entry : log_.entries()) {
    EXPECT_TRUE(entry.startsWith("The path of a file is no valid text and was refused: ")) << entry.toStdString();
  }
}

// --- Waiting for another program ------------------------------------------------------------------------------------

class FileWaits : public FileFixture {
 protected:
  using Clock = std::chrono::steady_clock;

  /// Sets the modification date to so many seconds from now.
  static void setAge(const QString& file, double seconds) {
    struct timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const double modified = static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9 - seconds;
    struct timespec times[2] = {};
    times[0].tv_sec = times[1].tv_sec = static_cast<time_t>(std::floor(modified));
    times[0].tv_nsec = times[1].tv_nsec = static_cast<long>((modified - std::floor(modified)) * 1e9);
    EXPECT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(file).constData(), times, 0), 0);
  }
  static double secondsOf(const std::function<void()>& work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
  }
};

TEST_F(FileWaits, EndOnceTheModificationDateIsFiveSecondsOld) {
  const QString file = write("growing");
  setAge(file, 4.6);
  const double waited = secondsOf([&] { QVFileManager::waitForFileWrites(file); });
  EXPECT_GT(waited, 0.2);
  EXPECT_LT(waited, 4);
  EXPECT_THAT(log_.entries(), ElementsAre("File " + file + " is currently being written to. Waiting...",
                                          "File " + file + " finished writing."));
}

TEST_F(FileWaits, AreNotForFilesThatNobodyWrites) {
  const QString old = write("old"), future = write("future");
  setAge(old, 6);
  setAge(future, -3600);
  EXPECT_LT(secondsOf([&] {
              QVFileManager::waitForFileWrites(old);
              QVFileManager::waitForFileWrites(old, path("no lock"));
              QVFileManager::waitForFileWrites(future);
              QVFileManager::waitForFileWrites(path("missing"));
            }),
            2);
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(FileWaits, AreLoggedForALockFileAndLastNoLongerForIt) {
  const QString old = write("old");
  setAge(old, 60);
  EXPECT_LT(secondsOf([&] { QVFileManager::waitForFileWrites(old, write("old.lock")); }), 2);
  EXPECT_THAT(log_.entries(), ElementsAre("File " + old + " is currently being written to. Waiting...",
                                          "File " + old + " finished writing."));
}

TEST_F(FileWaits, EndWhenTheFileVanishes) {
  const QString file = write("growing");
  std::thread remover([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    ::unlink(QFile::encodeName(file).constData());
  });
  EXPECT_LT(secondsOf([&] { QVFileManager::waitForFileWrites(file); }), 4);
  remover.join();
  EXPECT_EQ(log_.entries().size(), 2);
}

TEST_F(FileWaits, ForAFileToBeMadeAreOneLookAndOnePause) {
  const QString missing = path("missing"), empty = write("empty", ""), full = write("full");
  EXPECT_LT(secondsOf([&] { QVFileManager::waitForFileCreation(full, 100); }), 2);
  EXPECT_THAT(log_.entries(), IsEmpty());
  for (const double timeout : {0.0, 100.0}) {
    const double waited = secondsOf([&, timeout] { QVFileManager::waitForFileCreation(missing, timeout); });
    EXPECT_GE(waited, 0.0005);
    EXPECT_LT(waited, 2);
  }
  QVFileManager::waitForFileCreation(empty, 1);
  EXPECT_THAT(log_.entries(), ElementsAre("File " + missing + " is not yet created. Waiting...",
                                          "File " + missing + " is not yet created. Waiting...",
                                          "File " + empty + " is not yet created. Waiting..."));
}

}  // namespace
