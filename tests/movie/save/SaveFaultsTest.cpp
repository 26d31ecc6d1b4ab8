#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <random>
#include <set>

#include <gtest/gtest.h>

#include "movie/save/MetadataSave.h"
#include "tests/movie/save/CrashStates.h"
#include "tests/movie/save/SaveCases.h"
#include "tests/support/AtomBuilder.h"
#include "tests/support/SimulatedFile.h"

namespace movie {
namespace {

using namespace test;
using Call = SimulatedFile::Call;
using Fault = SimulatedFile::Fault;

/// A save into a simulated file that fails in some way.
struct Attempted {
  Result<SaveOutcome> outcome;
  SimulatedFile file;
};

Attempted attempt(const SaveCase& subject, const MovieFile& movie, std::function<Fault(Call, std::size_t)> fault) {
  SimulatedFile file(subject.file, movie.stamp());
  file.failWith(std::move(fault));
  auto outcome = saveMetadata(movie, subject.edits, file);
  return {std::move(outcome), std::move(file)};
}

/// What a reader of its own finds: the metadata, or why there is none. The media data are compared too.
std::string metadataIn(const SaveCase& subject, const Bytes& content) {
  std::string why;
  const auto before = seenIn(subject.file, why);
  const auto seen = seenIn(content, why);
  if (!seen) return why;
  if (seen->rest != before->rest || seen->chunks != before->chunks) return "another movie";
  for (const auto& [offset, size] : seen->chunks) {
    const auto at = static_cast<std::ptrdiff_t>(offset);
    if (!std::equal(content.begin() + at, content.begin() + at + static_cast<std::ptrdiff_t>(size),
                    subject.file.begin() + at)) {
      return "other media data";
    }
  }
  if (seen->descriptions == before->descriptions) return "old";
  return seen->descriptions == std::vector<Bytes>{subject.edits[0].entry} ? "new" : "neither";
}

/// Whether what a save may have to recover first stands in the file.
bool hasLeftovers(const SaveCase& subject) {
  return subject.name.find("leftover") != std::string::npos;
}

/// Visits every case with a movie opened from it, and how many calls its save makes.
void forEveryCase(const std::function<void(const SaveCase&, const MovieFile&, std::size_t)>& visit) {
  for (const SaveCase& subject : saveCases(11)) {
    SCOPED_TRACE(subject.name);
    const TemporaryFile file(subject.file);
    const auto movie = MovieFile::open(file.path());
    ASSERT_TRUE(movie) << movie.error().message();
    const Attempted good = attempt(subject, **movie, nullptr);
    ASSERT_TRUE(good.outcome) << good.outcome.error().message();
    visit(subject, **movie, good.file.callCount());
  }
}

void expectHonest(const SaveCase& subject, const Attempted& done, bool oneFault) {
  const std::string metadata = metadataIn(subject, done.file.content());
  EXPECT_EQ(done.file.openDescriptors(), 0U);
  if (!done.outcome) {
    EXPECT_EQ(metadata, "old");
    EXPECT_FALSE(done.outcome.error().reason().empty());
    // Rolled back to the byte, but for what an earlier save had left and for a size that a mdat lacked.
    if (oneFault && !hasLeftovers(subject) && subject.name.find("mdat of size 0") == std::string::npos) {
      EXPECT_EQ(done.file.content(), subject.file);
    }
  } else if (done.outcome->uncertain) {
    EXPECT_TRUE(metadata == "old" || metadata == "new") << metadata;
    EXPECT_FALSE(done.outcome->notes.empty());
  } else {
    EXPECT_EQ(metadata, "new");
  }
}

TEST(SaveFaults, OneFailingCallNeverDamagesAMovieAndIsTold) {
  std::size_t faults = 0;
  forEveryCase([&](const SaveCase& subject, const MovieFile& movie, std::size_t calls) {
    for (std::size_t at = 0; at < calls; ++at) {
      for (const int error : {EIO, ENOSPC, EFBIG}) {
        SCOPED_TRACE(testing::Message() << "call " << at << ", errno " << error);
        const Attempted done = attempt(subject, movie, [&](Call, std::size_t number) {
          return number == at ? Fault{error, false} : Fault{};
        });
        expectHonest(subject, done, true);
        ++faults;
      }
    }
  });
  std::printf("%zu single faults\n", faults);
  EXPECT_GT(faults, 1000U);
}

TEST(SaveFaults, AFileSystemThatCannotReserveRoomIsTold) {
  const std::string note = "The file system cannot reserve room; the save takes it as it goes.";
  std::size_t told = 0;
  forEveryCase([&](const SaveCase& subject, const MovieFile& movie, std::size_t) {
    bool reserves = false;
    const auto unable = [&](Call call, std::size_t) {
      reserves = reserves || call == Call::Reserve;
      return Fault{call == Call::Reserve ? EOPNOTSUPP : 0, false};
    };
    const Attempted done = attempt(subject, movie, unable), able = attempt(subject, movie, nullptr);
    ASSERT_TRUE(done.outcome) << done.outcome.error().message();
    EXPECT_EQ(std::ranges::count(done.outcome->notes, note), reserves ? 1 : 0);
    EXPECT_EQ(std::ranges::count(able.outcome->notes, note), 0);
    told += reserves;
  });
  EXPECT_GT(told, 0U);
}

TEST(SaveFaults, ADiskThatFailsFromThenOnNeverDamagesAMovie) {
  forEveryCase([&](const SaveCase& subject, const MovieFile& movie, std::size_t calls) {
    for (std::size_t at = 0; at < calls; ++at) {
      SCOPED_TRACE(at);
      const Attempted done = attempt(subject, movie, [&](Call, std::size_t number) {
        return Fault{number >= at ? EIO : 0, false};
      });
      expectHonest(subject, done, false);
    }
  });
}

TEST(SaveFaults, InterruptedAndShortCallsGoOn) {
  forEveryCase([&](const SaveCase& subject, const MovieFile& movie, std::size_t calls) {
    const Attempted good = attempt(subject, movie, nullptr);
    for (std::size_t at = 0; at < calls; ++at) {
      const Attempted interrupted = attempt(subject, movie, [&](Call, std::size_t number) {
        return Fault{number == at ? EINTR : 0, false};
      });
      ASSERT_TRUE(interrupted.outcome) << interrupted.outcome.error().message();
      EXPECT_EQ(interrupted.file.content(), good.file.content());
    }
    const Attempted allShort = attempt(subject, movie, [](Call, std::size_t) { return Fault{0, true}; });
    ASSERT_TRUE(allShort.outcome) << allShort.outcome.error().message();
    EXPECT_EQ(allShort.file.content(), good.file.content());
  });
}

TEST(SaveFaults, AStopAfterAFailureNeverDamagesAMovie) {
  std::mt19937 random(3);
  std::uint64_t states = 0;
  forEveryCase([&](const SaveCase& subject, const MovieFile& movie, std::size_t calls) {
    for (std::size_t at = 0; at < calls; ++at) {
      const Attempted done = attempt(subject, movie, [&](Call, std::size_t number) {
        return Fault{number == at ? EIO : 0, false};
      });
      std::set<Bytes> seen;
      test::visitCrashStates(subject.file, done.file.changes(), 12, random, [&](const Bytes& state) {
        ++states;
        if (!seen.insert(state).second) return;
        const std::string metadata = metadataIn(subject, state);
        ASSERT_TRUE(metadata == "old" || metadata == "new") << subject.name << ", call " << at << ": " << metadata;
      });
    }
  });
  std::printf("%llu states behind failures\n", static_cast<unsigned long long>(states));
}

TEST(SaveFaults, AFullDiskShowsBeforeAnyByteChanges) {
  forEveryCase([&](const SaveCase& subject, const MovieFile& movie, std::size_t) {
    if (hasLeftovers(subject) || subject.place == SavePlace::Sector) return;
    const Attempted done = attempt(subject, movie, [](Call call, std::size_t) {
      return Fault{call == Call::Reserve ? ENOSPC : 0, false};
    });
    ASSERT_FALSE(done.outcome);
    EXPECT_NE(done.outcome.error().reason().find("the disk is full"), std::string::npos);
    for (const auto& change : done.file.changes()) EXPECT_NE(change.call, Call::Write);
    EXPECT_EQ(done.file.content(), subject.file);
  });
}

TEST(SaveFaults, AFileSystemWithoutReservationsLocksAndLeasesWillDo) {
  forEveryCase([&](const SaveCase& subject, const MovieFile& movie, std::size_t) {
    const Attempted done = attempt(subject, movie, [](Call call, std::size_t) {
      if (call == Call::Reserve) return Fault{EOPNOTSUPP, false};
      if (call == Call::Lock) return Fault{ENOLCK, false};
      return Fault{call == Call::Lease ? EINVAL : 0, false};
    });
    ASSERT_TRUE(done.outcome) << done.outcome.error().message();
    EXPECT_FALSE(done.outcome->notes.empty());
    EXPECT_EQ(metadataIn(subject, done.file.content()), "new");
  });
}

TEST(SaveFaults, AFailedCommitIsUncertainAndNeitherUndoneNorTriedAgain) {
  forEveryCase([&](const SaveCase& subject, const MovieFile& movie, std::size_t calls) {
    std::size_t uncertain = 0;
    for (std::size_t at = 0; at < calls; ++at) {
      bool failed = false;
      std::size_t changesAfter = 0;
      const Attempted done = attempt(subject, movie, [&](Call call, std::size_t number) {
        if (failed && (call == Call::Write || call == Call::Sync || call == Call::Resize)) ++changesAfter;
        failed = failed || number == at;
        return Fault{number == at ? EIO : 0, false};
      });
      if (!done.outcome || !done.outcome->uncertain) continue;
      ++uncertain;
      EXPECT_EQ(changesAfter, 0U);
    }
    EXPECT_EQ(uncertain, 2U);  // the write, and its fsync
  });
}

}  // namespace
}  // namespace movie
