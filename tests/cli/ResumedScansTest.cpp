#include <csignal>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/ScanFixture.h"
#include "tests/support/TemporaryFolder.h"

// Scans that another one goes on with.

namespace cli::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

std::string longMaster() {
  return fixtureMovie("scan-resumed.mov", {"-stream_loop", "5", "-i", scanMaster(), "-c", "copy"});
}

std::string longExport() {
  return fixtureMovie("scan-resumed-dest.mp4",
                      {"-stream_loop", "5", "-i", scanExport("scan-resumed-part", scanPower), "-c", "copy"});
}

/// The file is that large: frames are in it.
std::function<bool(pid_t)> onceLarge(const std::string& path, std::uintmax_t bytes) {
  return [path, bytes](pid_t) {
    std::error_code none;
    const std::uintmax_t size = std::filesystem::file_size(path, none);
    return !none && size > bytes;
  };
}

TEST(ResumedScans, TellWhatAWholeOneTells) {
  const movie::test::TemporaryFolder folder;
  const std::string path = folder.path("scan.lumascan");
  const std::vector<std::string> command{"scan", longMaster(), longExport(), "--json", "--resume", path};
  const std::string whole = runLumacheck({"scan", longMaster(), longExport(), "--json"}).out;
  std::uintmax_t size = 1000;
  for (const int signal : {SIGKILL, SIGINT}) {
    SCOPED_TRACE(signal);
    const ProgramRun run = runLumacheckUntil(onceLarge(path, size), signal, command);
    ASSERT_NE(run.status, 0) << run.err;
    EXPECT_GT(std::filesystem::file_size(path), size) << "what was kept stays, and more comes to it";
    size = std::filesystem::file_size(path);
  }
  EXPECT_EQ(runLumacheck(command).out, whole);
  EXPECT_EQ(runLumacheck(command).out, whole) << "once more, from all that is known";
}

TEST(ResumedScans, HaveOneWriter) {
  const movie::test::TemporaryFolder folder;
  const std::string path = folder.path("scan.lumascan");
  const std::vector<std::string> command{"scan", longMaster(), longExport(), "--resume", path};
  ProgramRun second;
  const auto beside = [&, begun = onceLarge(path, 100)](pid_t process) {
    if (!begun(process)) return false;
    second = runLumacheck(command);
    return true;
  };
  runLumacheckUntil(beside, SIGINT, command);
  EXPECT_EQ(second.status, 2);
  EXPECT_EQ(second.out, "");
  EXPECT_THAT(second.err, EndsWith("scan.lumascan: Another scan is writing to this file.\n"));
}

TEST(ResumedScans, AreRefusedWhereTheFileIsOfSomethingElse) {
  const movie::test::TemporaryFolder folder;
  const std::string path = folder.path("scan.lumascan"), copy = folder.path("master.mp4");
  std::filesystem::copy_file(scanMaster(), copy);
  const auto refusal = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "scan");
    const ProgramRun run = runLumacheck(arguments);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    return run.err;
  };
  EXPECT_EQ(runLumacheck({"scan", copy, scanRemux(), "--to", "2", "--resume", path}).status, 0);
  const movie::Bytes before = movie::test::contentOf(path);
  constexpr const char* otherScan =
      "This is a scan of other movies, of what they were before, or with other options: remove it to begin anew.";
  EXPECT_THAT(refusal({copy, scanRemux(), "--to", "3", "--resume", path}), HasSubstr(otherScan));
  EXPECT_THAT(refusal({copy, scanMaster(), "--to", "2", "--resume", path}), HasSubstr(otherScan));
  EXPECT_THAT(refusal({copy, scanRemux(), "--to", "2", "--sample", "2", "--resume", path}), HasSubstr(otherScan));
  std::filesystem::last_write_time(copy, std::filesystem::last_write_time(copy) + std::chrono::seconds(1));
  EXPECT_THAT(refusal({copy, scanRemux(), "--to", "2", "--resume", path}), HasSubstr(otherScan));
  EXPECT_EQ(movie::test::contentOf(path), before);
  EXPECT_THAT(refusal({scanMaster(), scanRemux(), "--resume", copy}),
              HasSubstr("master.mp4: This file holds something else than a scan, and is left as it is."));
  EXPECT_EQ(movie::test::contentOf(copy), movie::test::contentOf(scanMaster()));
  EXPECT_THAT(refusal({scanMaster(), scanRemux(), "--resume", "/nowhere/scan"}),
              HasSubstr("/nowhere/scan: The scan cannot be kept there: No such file or directory."));
  EXPECT_THAT(refusal({scanMaster(), scanRemux(), "--resume", "/tmp"}),
              HasSubstr("/tmp: The scan cannot be kept there: this is no file."));
}

}  // namespace
}  // namespace cli::test
