#include <cstdint>
#include <map>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "tests/movie/save/SaveJudge.h"
#include "tests/support/AtomBuilder.h"

namespace movie {
namespace {

using namespace test;

/// Whether [begin, end) lies in movie atoms, free space, the size of a mdat, or behind it all.
bool belongsToSave(const Bytes& file, std::size_t begin, std::size_t end) {
  for (std::size_t at = 0; at + 8 <= file.size();) {
    const std::uint64_t written = read32(file, at);
    const std::uint64_t size = written == 1 ? read64(file, at + 8) : written == 0 ? file.size() - at : written;
    const FourCC type = read32(file, at + 4);
    const std::size_t last = at + static_cast<std::size_t>(size);
    const bool ours = type == fourCC("moov") || type == fourCC("free") || type == fourCC("skip") || type == 0;
    const bool sizing = type == fourCC("mdat") && written == 0 && begin == at && end == at + 4;
    if (!ours && !sizing && begin < last && end > at) return false;
    at = last;
  }
  return true;
}

TEST(SaveCrash, EveryCaseGoesTheWayItIsMeantTo) {
  for (const SaveCase& subject : saveCases(0)) {
    SCOPED_TRACE(subject.name);
    std::string why;
    const TemporaryFile file(subject.file);
    const auto recording = recordSave(file.path(), subject.file, subject.edits, why);
    ASSERT_TRUE(recording) << why;
    EXPECT_EQ(recording->outcome.place, subject.place);
    EXPECT_FALSE(recording->outcome.uncertain);
    const Judge judge(subject);
    EXPECT_EQ(judge.verdictAfter(recording->after, subject.edits[0].entry), "");
  }
}

TEST(SaveCrash, WritesAtMostTheMovieAtomTwice) {
  for (const SaveCase& subject : saveCases(11)) {
    SCOPED_TRACE(subject.name);
    std::size_t written = 0;
    for (const auto& change : changesOf(subject)) written += change.bytes.size();
    EXPECT_LE(written, 2 * subject.movie.size() + 1024);
  }
}

TEST(SaveCrash, ChangesNothingButFreeSpaceAndTheMovieAtom) {
  for (const SaveCase& subject : saveCases(11)) {
    SCOPED_TRACE(subject.name);
    for (const auto& change : changesOf(subject)) {
      if (change.call == SimulatedFile::Call::Resize) {
        EXPECT_GE(change.offset + subject.movie.size(), subject.file.size());
      }
      if (change.call != SimulatedFile::Call::Write) continue;
      EXPECT_TRUE(belongsToSave(subject.file, change.offset, change.offset + change.bytes.size())) << change.offset;
    }
  }
}

TEST(SaveCrash, AFewStatesOfEachCaseAreWhole) {
  std::mt19937 random(7);
  Tally tally;
  for (const std::size_t padding : {0U, 11U}) {
    for (const SaveCase& subject : saveCases(padding)) {
      tallyStates(subject, changesOf(subject), 8, random, Again::Yes, tally);
    }
  }
  EXPECT_EQ(tally.violations, 0U) << tally.first;
  EXPECT_GT(tally.saved, 500U);
}

Changes withoutSyncs(const Changes& changes) {
  Changes kept;
  for (const auto& change : changes) {
    if (change.call != SimulatedFile::Call::Sync) kept.push_back(change);
  }
  return kept;
}

/// The new movie atom over the old one, and the rest of the file again where it does not fit; then one fsync.
Changes naiveOverwrite(const SaveCase& subject) {
  const Bytes edited = editedMovieAtom(subject.movie, subject.edits).value();
  const auto at = static_cast<std::size_t>(
      std::search(subject.file.begin(), subject.file.end(), subject.movie.begin(), subject.movie.end()) -
      subject.file.begin());
  return {{SimulatedFile::Call::Write, at, edited}, {SimulatedFile::Call::Sync, 0, {}}};
}

TEST(SaveCrash, ANaiveOverwriteLosesMovies) {
  std::mt19937 random(11);
  Tally tally;
  for (const SaveCase& subject : saveCases(0)) {
    if (subject.name != "same size, movie first" && subject.name != "movie last") continue;
    tallyStates(subject, naiveOverwrite(subject), 300, random, Again::No, tally);
  }
  EXPECT_GT(tally.violations, 0U);
}

TEST(SaveCrash, ASaveWithoutFsyncLosesMovies) {
  std::mt19937 random(13);
  std::map<std::string, std::uint64_t> violations;
  for (const SaveCase& subject : saveCases(0)) {
    if (subject.place == SavePlace::Sector) continue;
    Tally tally;
    tallyStates(subject, withoutSyncs(changesOf(subject)), 300, random, Again::No, tally);
    violations[subject.name] = tally.violations;
  }
  for (const auto& [name, count] : violations) EXPECT_GT(count, 0U) << name;
}

}  // namespace
}  // namespace movie
