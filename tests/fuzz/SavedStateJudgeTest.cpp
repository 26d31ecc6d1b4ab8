#include <gtest/gtest.h>

#include "movie/save/MetadataSave.h"
#include "tests/fuzz/MemoryFile.h"
#include "tests/fuzz/SavedStateJudge.h"
#include "tests/movie/save/SaveCases.h"
#include "tests/support/SimulatedFile.h"

namespace fuzz {
namespace {

using movie::Bytes;
using movie::fourCC;
using movie::MovieFile;
using movie::test::SaveCase;
using movie::test::SimulatedFile;
using Metadata = SavedStateJudge::Metadata;

/// A case's file before and after a save, and a judge of the two.
class Saved {
 public:
  explicit Saved(const SaveCase& subject)
      : before(subject.file), movie_(MovieFile::open(file_.holding(before)).value()), judge(before, *movie_) {
    SimulatedFile saved(before, movie_->stamp());
    EXPECT_TRUE(movie::saveMetadata(*movie_, subject.edits, saved)) << subject.name;
    after = saved.content();
    EXPECT_TRUE(judge.learn(after)) << subject.name;
  }

 private:
  MemoryFile file_;

 public:
  Bytes before, after;

 private:
  std::shared_ptr<const MovieFile> movie_;

 public:
  SavedStateJudge judge;
};

Bytes withByteChanged(Bytes file, std::size_t at) {
  file[at] ^= 0x55;
  return file;
}

TEST(SavedStateJudge, TellsTheOldMetadataFromTheNew) {
  for (const SaveCase& subject : movie::test::saveCases(0)) {
    const Saved saved(subject);
    EXPECT_EQ(saved.judge.verdict(saved.before, Metadata::Old), "") << subject.name;
    EXPECT_EQ(saved.judge.verdict(saved.after, Metadata::New), "") << subject.name;
    EXPECT_NE(saved.judge.verdict(saved.before, Metadata::New), "") << subject.name;
    EXPECT_NE(saved.judge.verdict(saved.after, Metadata::Old), "") << subject.name;
  }
}

TEST(SavedStateJudge, SeesEveryByteOfTheMovieAtomAndOfMediaData) {
  for (const SaveCase& subject : movie::test::saveCases(0)) {
    const Saved saved(subject);
    for (const TopAtom& atom : topAtoms(saved.after)) {
      if (atom.type == fourCC("free") || atom.type == fourCC("skip")) continue;
      for (std::size_t at = atom.offset + 8; at < atom.end(); at += 7) {
        const Bytes damaged = withByteChanged(saved.after, at);
        EXPECT_NE(saved.judge.verdict(damaged, Metadata::Either), "") << subject.name << " at " << at;
      }
    }
  }
}

TEST(SavedStateJudge, SeesMediaDataInFreeSpace) {
  const auto cases = movie::test::saveCases(0);
  const auto subject = std::find_if(cases.begin(), cases.end(),
                                    [](const SaveCase& each) { return each.name == "chunks inside a free"; });
  ASSERT_NE(subject, cases.end());
  const Saved saved(*subject);
  const auto atoms = topAtoms(saved.before);
  const auto space =
      std::find_if(atoms.begin(), atoms.end(), [](const TopAtom& atom) { return atom.type == fourCC("free"); });
  ASSERT_NE(space, atoms.end());
  EXPECT_EQ(saved.judge.verdictOnMedia(withByteChanged(saved.after, space->offset + 8 + 100)),
            "media data have changed");
}

TEST(SavedStateJudge, RefusesAFileThatIsCut) {
  const Saved saved(movie::test::saveCases(0)[0]);
  for (std::size_t size = 0; size < saved.before.size(); size += 11) {
    const Bytes cut(saved.before.begin(), saved.before.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_NE(saved.judge.verdict(cut, Metadata::Either), "") << size;
  }
}

}  // namespace
}  // namespace fuzz
