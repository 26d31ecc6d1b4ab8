#include <algorithm>
#include <cstdio>
#include <map>
#include <random>
#include <set>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "movie/quicktime/MetadataSave.h"
#include "tests/movie/quicktime/CrashStates.h"
#include "tests/movie/quicktime/SaveCases.h"
#include "tests/support/AtomBuilder.h"
#include "tests/support/SimulatedFile.h"

namespace movie {
namespace {

using test::SaveCase;
using test::saveCases;
using test::seenIn;
using test::SeenMovie;
using test::SimulatedFile;
using test::TemporaryFile;
using Changes = std::vector<SimulatedFile::Change>;

struct Tally {
  std::uint64_t states = 0, violations = 0, saved = 0;
  std::string first;  ///< the first violation

  void violate(const std::string& what) {
    if (violations++ == 0) first = what;
  }
};

/// Judges the states of one save against the file before it.
class Judge {
 public:
  explicit Judge(const SaveCase& subject) : subject_(subject) {
    std::string why;
    before_ = seenIn(subject.file, why).value();
  }

  /// Empty for a movie with the old or the new metadata whose chunks are as they were.
  std::string verdict(const Bytes& file) const {
    std::string why;
    const auto seen = seenIn(file, why);
    if (!seen) return why;
    const bool old = seen->descriptions == before_.descriptions;
    if (!old && seen->descriptions != std::vector<Bytes>{subject_.edits[0].entry}) {
      return "the metadata are neither the old nor the new";
    }
    return verdictOnTheRest(*seen, file);
  }

  /// The same for a movie that is to have the given metadata.
  std::string verdictAfter(const Bytes& file, const Bytes& entry) const {
    std::string why;
    const auto seen = seenIn(file, why);
    if (!seen) return why;
    if (seen->descriptions != std::vector<Bytes>{entry}) return "the metadata are not the ones saved";
    return verdictOnTheRest(*seen, file);
  }

 private:
  std::string verdictOnTheRest(const SeenMovie& seen, const Bytes& file) const {
    if (seen.rest != before_.rest) return "the movie atom is another";
    if (seen.chunks != before_.chunks) return "the chunks are elsewhere";
    for (const auto& [offset, size] : seen.chunks) {
      const auto at = static_cast<std::ptrdiff_t>(offset);
      if (!std::equal(file.begin() + at, file.begin() + at + static_cast<std::ptrdiff_t>(size),
                      subject_.file.begin() + at)) {
        return "media data have changed";
      }
    }
    return {};
  }

  const SaveCase& subject_;
  SeenMovie before_;
};

/// The changes that the save makes, and the file after it.
struct Recording {
  Changes changes;
  Bytes after;
  SaveOutcome outcome;
};

std::optional<Recording> recordSave(const std::string& path, const Bytes& content,
                                    const std::vector<SampleDescriptionEdit>& edits, std::string& why) {
  const auto movie = MovieFile::open(path);
  if (!movie) {
    why = movie.error().message();
    return std::nullopt;
  }
  SimulatedFile file(content, (*movie)->stamp());
  auto outcome = saveMetadata(**movie, edits, file);
  if (!outcome) {
    why = outcome.error().message();
    return std::nullopt;
  }
  return Recording{file.changes(), file.content(), std::move(*outcome)};
}

/// One file on disk that takes one content after the other.
class Slate {
 public:
  Slate() : file_(Bytes(1)), descriptor_(::open(file_.path().c_str(), O_RDWR | O_CLOEXEC)) {}
  ~Slate() { ::close(descriptor_); }
  Slate(const Slate&) = delete;
  Slate& operator=(const Slate&) = delete;

  const std::string& show(const Bytes& content) const {
    EXPECT_EQ(::pwrite(descriptor_, content.data(), content.size(), 0), static_cast<ssize_t>(content.size()));
    EXPECT_EQ(::ftruncate(descriptor_, static_cast<off_t>(content.size())), 0);
    return file_.path();
  }

 private:
  TemporaryFile file_;
  int descriptor_;
};

void expectSavedAgain(const Judge& judge, const SaveCase& subject, const Slate& slate, const Bytes& state,
                      Tally& tally) {
  // Other metadata than those of the interrupted save, so that there always is something to save.
  test::ImageEntry entry;
  entry.extensions = {test::nclcExtension(9, 16, 9)};
  std::string why;
  const auto again = recordSave(slate.show(state), state, {{0, 0, entry.build()}}, why);
  if (!again) return tally.violate(subject.name + ", saved again: " + why);
  const std::string verdict = judge.verdictAfter(again->after, entry.build());
  if (!verdict.empty()) return tally.violate(subject.name + ", saved again: " + verdict);
  ++tally.saved;
}

enum class Again { No, Yes };

void tallyStates(const SaveCase& subject, const Changes& changes, std::size_t perPoint, std::mt19937& random,
                 Again again, Tally& tally) {
  const Judge judge(subject);
  const Slate slate;
  std::set<Bytes> seen;
  test::visitCrashStates(subject.file, changes, perPoint, random, [&](const Bytes& state) {
    ++tally.states;
    if (!seen.insert(state).second) return;
    const std::string verdict = judge.verdict(state);
    if (!verdict.empty()) return tally.violate(subject.name + ": " + verdict);
    if (again == Again::Yes) expectSavedAgain(judge, subject, slate, state, tally);
  });
}

Changes changesOf(const SaveCase& subject) {
  std::string why;
  const TemporaryFile file(subject.file);
  const auto recording = recordSave(file.path(), subject.file, subject.edits, why);
  EXPECT_TRUE(recording) << subject.name << ": " << why;
  return recording ? recording->changes : Changes{};
}

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

const std::vector<std::size_t>& paddings() {
  static const std::vector<std::size_t> all = [] {
    std::vector<std::size_t> some{0};
    for (std::size_t at = 8; at < 8 + 512; ++at) some.push_back(at);
    return some;
  }();
  return all;
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

TEST(SaveCrashStates, AreAllWholeAndCanAllBeSavedAgain) {
  constexpr std::size_t perPoint = 24;
  std::mt19937 random(1);
  Tally tally;
  for (const std::size_t padding : paddings()) {
    for (const SaveCase& subject : saveCases(padding)) {
      tallyStates(subject, changesOf(subject), perPoint, random, Again::Yes, tally);
    }
  }
  std::printf("%llu crash states, %llu violations, %llu different states saved again\n",
              static_cast<unsigned long long>(tally.states), static_cast<unsigned long long>(tally.violations),
              static_cast<unsigned long long>(tally.saved));
  EXPECT_GE(tally.states, 100'000U);
  EXPECT_EQ(tally.violations, 0U) << tally.first;
}

}  // namespace
}  // namespace movie
