#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <random>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "movie/copy/FlattenedCopy.h"
#include "tests/movie/copy/FlattenedMovies.h"
#include "tests/support/FaultyCalls.h"
#include "tests/support/KilledChild.h"

namespace movie {
namespace {

namespace fs = std::filesystem;
using namespace test;
using testing::ElementsAre;

using Call = sys::test::FaultyCalls::Call;
using Fault = sys::test::FaultyCalls::Fault;
using FaultOf = sys::test::FaultyCalls::FaultOf;
using sys::test::FaultyCalls;

/// A way that a copy can take, by what the file system cannot do.
struct Way {
  const char* name;
  bool replaces = false, named = false, byHand = false;

  Fault ownFault(Call call) const {
    if (named && call == Call::OpenUnnamed) return {EOPNOTSUPP, false};
    return {byHand && call == Call::Copy ? EXDEV : 0, false};
  }
};

const std::vector<Way> ways{{"new", false, false, false},
                            {"replaced", true, false, false},
                            {"new, named", false, true, false},
                            {"replaced, named", true, true, false},
                            {"new, read and written", false, false, true}};

/// A movie, and maybe a file in the place of the copy.
class Scene {
 public:
  explicit Scene(const Way& way) : way_(way) {
    from_ = folder_.add("from.mov", source());
    if (way.replaces) reset();
  }
  static const Bytes& source() {
    static const Bytes bytes = MovieParts{{"ftyp", "moov", "mdat", "free", "mdat"}}.build();
    return bytes;
  }
  static Bytes old() { return {1, 2, 3}; }
  const std::string& target() const { return target_; }

  Result<void> copy(FaultyCalls& calls, const CopyProgress& progress = {}) const {
    const auto movie = openedMovie(from_);
    return writeFlattenedCopy(*movie, movie->movieAtom(), target_, progress, calls);
  }
  void reset() const {
    ::unlink(target_.c_str());
    if (way_.replaces) folder_.add("to.mov", old());
  }
  std::vector<std::string> names() const { return folder_.names(); }

  /// What there is of the copy: "nothing", "old", "new" or "damaged"; with "and more" when anything else is there.
  std::string found(const Bytes& complete) const {
    std::string what = "nothing";
    if (fs::exists(target_)) {
      const Bytes content = contentOf(target_);
      what = content == complete ? "new" : content == old() ? "old" : "damaged";
    }
    EXPECT_EQ(contentOf(from_), source());
    return names().size() == (what == "nothing" ? 1U : 2U) ? what : what + " and more";
  }

 private:
  Way way_;
  TemporaryFolder folder_;
  std::string from_, target_ = folder_.path("to.mov");
};

/// Visits every way with its scene, the complete copy and how many calls it takes.
void forEveryWay(const std::function<void(const Way&, const Scene&, const Bytes&, std::size_t)>& visit) {
  for (const Way& way : ways) {
    SCOPED_TRACE(way.name);
    const Scene scene(way);
    FaultyCalls calls([&](Call call, std::size_t) { return way.ownFault(call); });
    const auto status = scene.copy(calls);
    ASSERT_TRUE(status) << status.error().message();
    EXPECT_EQ(test::samplesOf(scene.target()).size(), 2U);
    visit(way, scene, contentOf(scene.target()), calls.callCount());
  }
}

/// Makes the copy with faults; those of the way itself come first.
Result<void> attempt(const Way& way, const Scene& scene, const FaultOf& fault) {
  scene.reset();
  FaultyCalls calls([&](Call call, std::size_t number) {
    const Fault own = way.ownFault(call);
    return own.error != 0 ? own : fault(call, number);
  });
  return scene.copy(calls);
}

void expectOldOrNew(const Way& way, const Scene& scene, const Bytes& complete, const Result<void>& status) {
  const std::string before = way.replaces ? "old" : "nothing";
  const std::string found = scene.found(complete);
  if (status) {
    EXPECT_EQ(found, "new");
  } else if (status.error().reason().rfind("the file is complete", 0) == 0) {
    EXPECT_EQ(found, "new");
  } else {
    EXPECT_EQ(found, before) << status.error().reason();
    EXPECT_FALSE(status.error().reason().empty());
  }
}

TEST(FlattenedCalls, OneThatFailsLeavesTheOldFileOrTheNewAndNothingElse) {
  std::size_t faults = 0, refused = 0;
  forEveryWay([&](const Way& way, const Scene& scene, const Bytes& complete, std::size_t calls) {
    for (std::size_t at = 0; at < calls; ++at) {
      for (const int error : {EIO, ENOSPC, EDQUOT, EFBIG, EACCES}) {
        SCOPED_TRACE(testing::Message() << "call " << at << ", errno " << error);
        const auto status = attempt(way, scene, [&](Call, std::size_t number) {
          return Fault{number == at ? error : 0, false};
        });
        expectOldOrNew(way, scene, complete, status);
        ++faults;
        if (!status) ++refused;
      }
    }
  });
  std::printf("%zu single faults, %zu copies not made\n", faults, refused);
  EXPECT_GT(refused, 150U);
}

/// Of a disk that fails for good not even the removal of a file can be had; nothing that has a name is removed then.
TEST(FlattenedCalls, ADiskThatFailsFromThenOnLeavesTheOldFileOrTheNew) {
  forEveryWay([&](const Way& way, const Scene& scene, const Bytes& complete, std::size_t calls) {
    for (std::size_t at = 0; at < calls; ++at) {
      SCOPED_TRACE(at);
      const auto status = attempt(way, scene, [&](Call call, std::size_t number) {
        return Fault{number >= at && call != Call::Unlink ? EIO : 0, false};
      });
      expectOldOrNew(way, scene, complete, status);
      EXPECT_FALSE(status);
    }
  });
}

TEST(FlattenedCalls, InterruptedAndShortOnesGoOn) {
  forEveryWay([&](const Way& way, const Scene& scene, const Bytes& complete, std::size_t calls) {
    for (std::size_t at = 0; at < calls; ++at) {
      SCOPED_TRACE(at);
      const auto status = attempt(way, scene, [&](Call, std::size_t number) {
        return Fault{number == at ? EINTR : 0, false};
      });
      EXPECT_TRUE(status) << status.error().reason();
      EXPECT_EQ(scene.found(complete), "new");
    }
    const auto status = attempt(way, scene, [](Call, std::size_t) { return Fault{0, true}; });
    ASSERT_TRUE(status) << status.error().message();
    EXPECT_EQ(scene.found(complete), "new");
  });
}

TEST(FlattenedCalls, AFullDiskIsToldAsSuch) {
  forEveryWay([&](const Way& way, const Scene& scene, const Bytes& complete, std::size_t) {
    for (const Call full : {Call::Reserve, Call::Write}) {
      const auto status = attempt(way, scene, [&](Call call, std::size_t) {
        return Fault{call == full ? ENOSPC : 0, false};
      });
      ASSERT_FALSE(status);
      EXPECT_EQ(status.error().reason(), "there is not enough space on the disk");
      EXPECT_EQ(status.error().file, scene.target());
      expectOldOrNew(way, scene, complete, status);
    }
  });
}

TEST(FlattenedCalls, AFileThatTakesTheNameMeanwhileIsKept) {
  for (const Way& way : ways) {
    if (way.replaces) continue;
    const Scene scene(way);
    FaultyCalls calls([&](Call call, std::size_t) { return way.ownFault(call); });
    const auto status = scene.copy(calls, [&](std::uint64_t, std::uint64_t) {
      const int file = ::open(scene.target().c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
      EXPECT_EQ(::pwrite(file, "\1\2\3", 3, 0), 3);
      ::close(file);
      return true;
    });
    ASSERT_FALSE(status) << way.name;
    EXPECT_EQ(status.error().reason(), "another file has taken that name meanwhile");
    EXPECT_EQ(contentOf(scene.target()), Scene::old());
    EXPECT_THAT(scene.names(), ElementsAre("from.mov", "to.mov"));
  }
}

/// Whether a copy into the tests' folder has a name while it is written.
bool isNamedMeanwhile(const Way& way) {
  const Scene scene(way);
  std::size_t most = 0;
  FaultyCalls calls([&](Call call, std::size_t) { return way.ownFault(call); });
  EXPECT_TRUE(scene.copy(calls, [&](std::uint64_t, std::uint64_t) {
    most = std::max(most, scene.names().size());
    return true;
  }));
  return most > (way.replaces ? 2U : 1U);
}

TEST(FlattenedCalls, AFileWithoutANameIsAskedForFirst) {
  for (const Way& way : ways) {
    if (way.named) {
      EXPECT_TRUE(isNamedMeanwhile(way)) << way.name;
    } else {
      EXPECT_EQ(isNamedMeanwhile(way), isNamedMeanwhile(ways[0])) << way.name;
    }
  }
}

/// Only the administrator can try with a group that is not the writer's own.
TEST(FlattenedCalls, AGroupThatCannotBeKeptMayDoWhatAllOthersMay) {
  const Way& way = ways[1];
  const Scene scene(way);
  const bool foreign = ::geteuid() == 0;
  if (foreign) {
    ASSERT_EQ(::chown(scene.target().c_str(), 1234, 5678), 0);
  }
  ASSERT_EQ(::chmod(scene.target().c_str(), 0662), 0);
  FaultyCalls calls([](Call call, std::size_t) { return Fault{call == Call::Owner ? EPERM : 0, false}; });
  ASSERT_TRUE(scene.copy(calls));
  struct stat status {};
  ASSERT_EQ(::stat(scene.target().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, foreign ? 0622U : 0662U);
}

// --- killed ---

/// A movie whose copy takes a while.
Bytes largeMovie(std::uint8_t last) {
  constexpr std::size_t size = 3'000'000;
  Bytes media = test::typedMediaData("qt  ", size);
  media.back() = last;
  return test::joined({media, test::MovieSpec().build()});
}

/// Copies the movies in turn to one place until it is killed; each time into an empty place, or over the last copy.
[[noreturn]] void copyForever(const std::vector<std::string>& sources, const std::string& to, bool replaces) {
  for (std::size_t i = 0;; ++i) {
    if (!replaces) ::unlink(to.c_str());
    const auto movie = MovieFile::open(sources[i % sources.size()]);
    if (!movie || !writeFlattenedCopy(**movie, (*movie)->movieAtom(), to)) ::_exit(1);
  }
}

TEST(FlattenedKill, AKilledCopyLeavesTheOldFileOrTheNewAndNoPartOfAny) {
  const bool named = isNamedMeanwhile(ways[0]);
  constexpr int kills = 60;
  std::mt19937 random(7);  // NOLINT(cert-msc32-c,cert-msc51-cpp): any moments will do
  for (const bool replaces : {false, true}) {
    const TemporaryFolder folder;
    const Bytes first = largeMovie(1), second = largeMovie(2);
    const std::vector<std::string> sources{folder.add("a.mov", first), folder.add("b.mov", second)};
    const std::string to = folder.path("to.mov");
    std::vector<Bytes> complete;
    for (const std::string& source : sources) {
      const auto movie = openedMovie(source);
      ASSERT_TRUE(writeFlattenedCopy(*movie, movie->movieAtom(), to));
      complete.push_back(contentOf(to));
    }
    int absent = 0;
    for (int i = 0; i < kills; ++i) {
      const int status =
          killedAfter(200 + static_cast<unsigned>(random() % 20'000), [&] { copyForever(sources, to, replaces); });
      ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the copy failed";
      for (const std::string& name : folder.names()) {
        if (name == "a.mov" || name == "b.mov") continue;
        // Killed between its two names, a copy that replaces another is there under the first one.
        ASSERT_TRUE(name == "to.mov" || replaces || named) << name;
        if (name != "to.mov" && named) continue;
        ASSERT_THAT(complete, testing::Contains(contentOf(folder.path(name)))) << name;
        if (name != "to.mov") ::unlink(folder.path(name).c_str());
      }
      ASSERT_TRUE(!replaces || fs::exists(to));
      if (!fs::exists(to)) ++absent;
    }
    EXPECT_EQ(contentOf(sources[0]), first);
    EXPECT_EQ(contentOf(sources[1]), second);
    EXPECT_TRUE(replaces || absent > 0) << "no copy was killed on its way";
  }
}

}  // namespace
}  // namespace movie
