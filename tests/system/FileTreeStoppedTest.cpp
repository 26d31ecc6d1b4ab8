// Copies that are asked to stop.

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "system/FileTree.h"

namespace sys {
namespace {

namespace fs = std::filesystem;

class StoppedCopies : public testing::Test {
 protected:
  StoppedCopies() {
    std::string pattern = (fs::temp_directory_path() / "stopped-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
  }
  ~StoppedCopies() override { fs::remove_all(folder_); }
  StoppedCopies(const StoppedCopies&) = delete;
  StoppedCopies& operator=(const StoppedCopies&) = delete;

  /// All that lies in the folder, however deep.
  std::vector<fs::path> entries() const {
    std::vector<fs::path> all;
    std::error_code gone;
    for (fs::recursive_directory_iterator entry(folder_, gone), end; !gone && entry != end; entry.increment(gone)) {
      all.push_back(entry->path());
    }
    return all;
  }
  /// Copies and stops once that much stands in the folder.
  Result<void> copyUntil(const std::string& source, std::size_t entriesThen, std::uintmax_t bytesThen) {
    std::stop_source stop;
    std::jthread stopper([&](const std::stop_token& over) {
      const auto isTime = [&] {
        const auto all = entries();
        std::error_code gone;
        return all.size() >= entriesThen && (bytesThen == 0 || fs::file_size(all.back(), gone) >= bytesThen);
      };
      while (!over.stop_requested() && !isTime()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
      stop.request_stop();
    });
    return copyTree(source, folder_ + "/copy", stop.get_token());
  }

  std::string folder_;
};

TEST_F(StoppedCopies, DoNotBegin) {
  std::ofstream(folder_ + "/file") << "content";
  std::stop_source stop;
  stop.request_stop();
  const auto result = copyTree(folder_ + "/file", folder_ + "/copy", stop.get_token());
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().code, ECANCELED);
  EXPECT_THAT(entries(), testing::ElementsAre(folder_ + "/file"));
}

TEST_F(StoppedCopies, EndWithinAFile) {
  // A file without an end, for our purposes: 256 GB.
  const auto result = copyUntil("/proc/self/pagemap", 1, 1 << 20);
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().code, ECANCELED);
  EXPECT_THAT(entries(), testing::IsEmpty());
}

TEST_F(StoppedCopies, EndWithinAFolder) {
  const std::string source = folder_ + "/source";
  fs::create_directory(source);
  constexpr int files = 20'000;
  for (int i = 0; i < files; ++i) std::ofstream(source + "/" + std::to_string(i)) << "content";
  const auto result = copyUntil(source, files + 10, 0);
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().code, ECANCELED);
  EXPECT_EQ(entries().size(), files + 1U) << "the source and nothing else";
}

}  // namespace
}  // namespace sys
