#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "movie/save/MetadataSave.h"
#include "tests/movie/save/CrashStates.h"
#include "tests/movie/save/SaveCases.h"
#include "tests/support/AtomBuilder.h"
#include "tests/support/KilledChild.h"
#include "tests/support/TemporaryFolder.h"

namespace movie {
namespace {

using test::SaveCase;
using test::seenIn;
using test::TemporaryFile;

/// Saves the two entries in turn until it is killed.
[[noreturn]] void saveForever(const std::string& path, const std::vector<Bytes>& entries) {
  for (std::size_t i = 0;; ++i) {
    const auto movie = MovieFile::open(path);
    if (!movie || !saveMetadata(**movie, {{0, 0, entries[i % entries.size()]}})) ::_exit(1);
  }
}

TEST(SaveKill, AKilledSaveLeavesAWholeMovieThatSavesAgain) {
  constexpr int kills = 1000;
  std::mt19937 random(5);
  const std::vector<SaveCase> cases = test::saveCases(0);
  int count = 0;
  while (count < kills) {
    for (const SaveCase& subject : cases) {
      SCOPED_TRACE(subject.name);
      const TemporaryFile file(subject.file);
      std::string why;
      const auto before = seenIn(subject.file, why).value();
      const std::vector<Bytes> entries{subject.edits[0].entry, before.descriptions[0]};
      for (int i = 0; i < 12; ++i, ++count) {
        const int status = test::killedAfter(200 + static_cast<unsigned>(random() % 20'000),
                                             [&] { saveForever(file.path(), entries); });
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the save failed";
        const Bytes content = test::contentOf(file.path());
        const auto seen = seenIn(content, why);
        ASSERT_TRUE(seen) << why;
        ASSERT_EQ(seen->rest, before.rest);
        ASSERT_EQ(seen->chunks, before.chunks);
        ASSERT_NE(std::find(entries.begin(), entries.end(), seen->descriptions.at(0)), entries.end());
        for (const auto& [offset, size] : seen->chunks) {
          const auto at = static_cast<std::ptrdiff_t>(offset);
          ASSERT_TRUE(std::equal(content.begin() + at, content.begin() + at + static_cast<std::ptrdiff_t>(size),
                                 subject.file.begin() + at));
        }
      }
    }
  }
  std::printf("%d saves killed\n", count);
}

}  // namespace
}  // namespace movie
