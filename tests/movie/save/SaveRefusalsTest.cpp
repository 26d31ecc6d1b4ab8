#include <cerrno>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "movie/save/MetadataSave.h"
#include "tests/support/AtomBuilder.h"
#include "tests/support/FaultyCalls.h"
#include "tests/support/TemporaryFolder.h"

namespace movie {
namespace {

using sys::test::FaultyCalls;
using namespace test;

Bytes entryWith(const std::vector<Bytes>& extensions) {
  ImageEntry entry;
  entry.extensions = extensions;
  return entry.build();
}

const std::vector<SampleDescriptionEdit>& edits() {
  static const std::vector<SampleDescriptionEdit> some{{0, 0, entryWith({gamaExtension(0x20000)})}};
  return some;
}

/// ftyp and a mdat of 64 bytes, whose chunk is at 28.
const Bytes data = typedMediaData("qt  ", 64);

Bytes movieAt(std::uint64_t chunk, const std::vector<Bytes>& more = {}) {
  MovieSpec movie;
  movie.tracks[0].chunkOffsets = {chunk};
  movie.more = more;
  return movie.build();
}

Bytes withSize(Bytes atom, std::uint32_t size) {
  write32(atom, 0, size);
  return atom;
}

Bytes text(std::string_view type, std::size_t size) {
  AtomBuilder atom(type);
  for (std::size_t i = 8; i < size; ++i) atom.u8(7);
  return atom.build();
}

Bytes auxiliaryOffsets(std::uint32_t offset) {
  return AtomBuilder("saio").u32(0).u32(1).u32(offset).build();
}

/// One item of one extent, in the file itself.
Bytes itemLocations(std::uint32_t offset, std::uint32_t length) {
  return AtomBuilder("iloc").u32(0).u16(0x4400).u16(1).u16(1).u16(0).u16(1).u32(offset).u32(length).build();
}

Bytes metaWith(const Bytes& child) {
  return AtomBuilder("meta").u32(0).bytes(child).build();
}

/// In so many meta atoms, one in the other.
Bytes inMetas(int count, Bytes atom) {
  for (int i = 0; i < count; ++i) atom = metaWith(atom);
  return atom;
}

struct Refusal {
  const char* name;
  Bytes file;
  const char* reason;
};

std::vector<Refusal> refusals() {
  const Bytes movie = movieAt(28);
  const auto end = static_cast<std::uint32_t>(data.size());
  MovieSpec twoTracks;
  twoTracks.tracks.push_back({});
  std::vector<Refusal> all{
      {"fragmented by mvex", joined({data, movieAt(28, {test::movieExtends(1, 1, 1, 0)})}), "fragmented"},
      {"compressed", joined({data, test::compressedMovie(movie)}), "compressed"},
      {"foreign second movie", joined({data, movie, twoTracks.build()}), "a second movie"},
      {"three movies", joined({data, movie, movie, movie}), "several movies"},
      {"second movie not at the end", joined({data, movie, movie, text("uuid", 20)}), "several movies"},
      {"free of size 0", joined({data, movie, withSize(text("free", 40), 0)}), "no size of its own"},
      {"movie of size 0", joined({data, withSize(movie, 0)}), "no size of its own"},
      {"bytes behind the last atom", joined({data, movie, Bytes{1, 2, 3}}), "do not end where the file does"},
      {"an incomplete atom at the end", joined({data, movie, withSize(text("uuid", 40), 400)}), "do not end"},
      {"a malformed size", joined({data, movie, withSize(text("free", 40), 5)}), "do not end"},
      {"a chunk in the movie atom", joined({data, movieAt(end + 20)}), "inside the movie atom"},
      {"a chunk that reaches into the movie atom", joined({data, movieAt(end - 29)}), "inside the movie atom"},
      {"a chunk past the end", joined({data, movieAt(100'000)}), "past the end"},
      {"a chunk far past any end",
       [] {
         MovieSpec far;
         far.tracks[0].wideOffsets = true;
         far.tracks[0].chunkOffsets = {~std::uint64_t{0} - 3};
         return joined({data, far.build()});
       }(),
       "past the end"},
      {"a chunk in zeros at the end", joined({data, movieAt(data.size() + movie.size() + 8), Bytes(64)}),
       "past the end"},
      {"a chunk in an incomplete free",
       joined({data, movieAt(data.size() + movie.size() + 8), withSize(text("free", 64), 600)}), "past the end"},
      {"a chunk in the free beside it", joined({data, movieAt(data.size() + movie.size() + 10), text("free", 80)}),
       "free space beside"},
      {"a chunk in the free before it", joined({data, text("free", 80), movieAt(data.size() + 10)}),
       "free space beside"},
      {"a chunk in the free at the end, where the movie atom would go",
       joined({movieAt(movie.size() + data.size() + 10), data, text("free", 80)}), "free space at the end"},
      {"saio into the movie atom", joined({data, movieAt(28, {auxiliaryOffsets(end + 50)})}), "inside the movie atom"},
      {"iloc into the movie atom", joined({data, movieAt(28, {metaWith(itemLocations(end + 50, 4))})}),
       "inside the movie atom"},
      {"iloc without version and flags before it",
       joined({data, movie, test::atomOf("meta", {itemLocations(50'000, 4)})}), "past the end"},
      {"iloc behind flags", joined({data, movie, AtomBuilder("meta").u32(1).bytes(itemLocations(50'000, 4)).build()}),
       "past the end"},
      {"iloc of the file into the movie atom", joined({data, movie, metaWith(itemLocations(end + 50, 4))}),
       "inside the movie atom"},
      {"iloc past the end", joined({data, movie, metaWith(itemLocations(50'000, 4))}), "past the end"},
      {"iloc as deep as any is looked for", joined({data, movie, inMetas(8, itemLocations(50'000, 4))}),
       "past the end"},
      {"iloc that is cut", joined({data, movie, metaWith(AtomBuilder("iloc").u32(0).u16(0x4400).u16(9).build())}),
       "cannot be understood"},
      {"a chunk in a second movie atom",
       joined({data, movieAt(data.size() + movie.size() + 20), movieAt(data.size() + movie.size() + 20)}),
       "inside a second movie atom"}};
  for (const unsigned sizes : {0x9000U, 0x0900U, 0x0090U, 0x0009U}) {
    const Bytes wide = AtomBuilder("iloc").versionAndFlags(1).u16(sizes).u16(0).build();
    all.push_back({"iloc of numbers of nine bytes", joined({data, movie, metaWith(wide)}), "cannot be understood"});
  }
  for (const char* type : {"moof", "styp", "sidx", "ssix", "mfra"}) {
    all.push_back({type, joined({data, movie, text(type, 24)}), "fragmented"});
  }
  Bytes across = joined({fileType("qt  "), movieAt(28), text("uuid", 8)});
  across = joined({across, text("uuid", 8 + (2 * 512 - 2 - 8 - across.size() % 512) % 512)});
  const Bytes open = withSize(text("mdat", 100), 0);
  MovieSpec far;
  far.tracks[0].chunkOffsets = {across.size() + 20};
  Bytes inside = joined({fileType("qt  "), far.build(), text("uuid", 8)});
  inside = joined({inside, Bytes(across.begin() + static_cast<std::ptrdiff_t>(inside.size()), across.end()), open});
  all.push_back({"a mdat of size 0 whose size lies in two sectors", inside, "cannot safely be given one"});
  return all;
}

TEST(SaveRefusals, NameTheReasonAndLeaveTheFileAlone) {
  for (const Refusal& row : refusals()) {
    SCOPED_TRACE(row.name);
    const TemporaryFile file(row.file);
    const auto movie = MovieFile::open(file.path());
    ASSERT_TRUE(movie) << movie.error().message();
    const auto possible = canUpdate(**movie, edits());
    ASSERT_FALSE(possible);
    EXPECT_NE(possible.error().reason().find(row.reason), std::string::npos) << possible.error().message();
    const auto outcome = saveMetadata(**movie, edits());
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.error().reason(), possible.error().reason());
    EXPECT_EQ(test::contentOf(file.path()), row.file);
  }
}

TEST(SaveRefusals, AreNotMetByOffsetsElsewhere) {
  const std::vector<Bytes> files{joined({data, movieAt(28, {auxiliaryOffsets(30)})}),
                                 joined({data, movieAt(28, {metaWith(itemLocations(30, 10))})}),
                                 joined({data, movieAt(28), metaWith(itemLocations(30, 10)), Bytes(4)}),
                                 // Deeper than any format has them, and every level costs time.
                                 joined({data, movieAt(28), inMetas(9, itemLocations(50'000, 4))})};
  for (const Bytes& content : files) {
    const TemporaryFile file(content);
    const auto movie = MovieFile::open(file.path());
    const auto outcome = saveMetadata(**movie, edits());
    EXPECT_TRUE(outcome) << outcome.error().message();
  }
}

class OpenedMovie : public testing::Test {
 protected:
  const Bytes content_ = joined({data, movieAt(28)});
  const TemporaryFile file_{content_};
  const std::shared_ptr<const MovieFile> movie_ = MovieFile::open(file_.path()).value();

  void expectRefused(const char* reason) const {
    const auto outcome = saveMetadata(*movie_, edits());
    ASSERT_FALSE(outcome);
    EXPECT_NE(outcome.error().reason().find(reason), std::string::npos) << outcome.error().message();
  }
};

TEST_F(OpenedMovie, IsRefusedOnceChangedOnDisk) {
  std::ofstream(file_.path(), std::ios::binary | std::ios::in).seekp(40).put('x');
  const timespec times[2]{{0, UTIME_OMIT}, {movie_->stamp().modifiedSeconds + 1, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, file_.path().c_str(), times, 0), 0);
  expectRefused("changed on disk");
}

TEST_F(OpenedMovie, IsRefusedWhenItsMovieAtomChangedUnderTheSameTime) {
  {
    std::fstream stream(file_.path(), std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(static_cast<std::streamoff>(data.size()) + 40).put('x');
  }
  const timespec times[2]{{0, UTIME_OMIT}, {movie_->stamp().modifiedSeconds, movie_->stamp().modifiedNanoseconds}};
  ASSERT_EQ(::utimensat(AT_FDCWD, file_.path().c_str(), times, 0), 0);
  expectRefused("changed on disk");
}

TEST_F(OpenedMovie, IsRefusedWhenAnotherFileHasItsName) {
  const TemporaryFile other(content_);
  std::filesystem::copy_file(other.path(), other.path() + "2");
  std::filesystem::rename(other.path() + "2", file_.path());
  expectRefused("changed on disk");
  EXPECT_EQ(test::contentOf(file_.path()), content_);
}

TEST_F(OpenedMovie, IsRefusedWhileOpenForWritingElsewhere) {
  const int writer = ::open(file_.path().c_str(), O_WRONLY | O_CLOEXEC);
  expectRefused("open for writing");
  EXPECT_EQ(test::contentOf(file_.path()), content_);
  ::close(writer);
  EXPECT_TRUE(saveMetadata(*movie_, edits()));
}

TEST_F(OpenedMovie, IsRefusedWhileAnotherSaverHoldsIt) {
  auto other = WritableFile::open(file_.path(), sys::systemCalls());
  ASSERT_TRUE(other);
  ASSERT_TRUE(other->isLocked());
  expectRefused("another program");
}

TEST_F(OpenedMovie, IsSavedWhileOpenForReadingElsewhere) {
  const int reader = ::open(file_.path().c_str(), O_RDONLY | O_CLOEXEC);
  EXPECT_TRUE(saveMetadata(*movie_, edits()));
  ::close(reader);
}

TEST_F(OpenedMovie, IsRefusedWithoutPermission) {
  ASSERT_EQ(::chmod(file_.path().c_str(), 0444), 0);
  if (::geteuid() == 0) {
    EXPECT_TRUE(canUpdate(*movie_, edits()));  // which root has
  } else {
    expectRefused("permission");
  }
}

TEST_F(OpenedMovie, IsRefusedOnceItIsGone) {
  ASSERT_EQ(::unlink(file_.path().c_str()), 0);
  expectRefused("no such file");
}

TEST_F(OpenedMovie, KeepsItsNamesAndTellsThem) {
  const std::string link = file_.path() + ".link", name = file_.path() + ".name";
  std::filesystem::create_symlink(file_.path(), link);
  std::filesystem::create_hard_link(file_.path(), name);
  const auto movie = MovieFile::open(link);
  ASSERT_TRUE(movie);
  const auto outcome = saveMetadata(**movie, edits());
  ASSERT_TRUE(outcome) << outcome.error().message();
  EXPECT_EQ(outcome->names, 2U);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(test::contentOf(name), test::contentOf(file_.path()));
  EXPECT_NE(test::contentOf(name), content_);
  std::filesystem::remove(link);
  std::filesystem::remove(name);
}

TEST_F(OpenedMovie, IsOnlyLookedAtByCanUpdate) {
  EXPECT_TRUE(canUpdate(*movie_, edits()));
  EXPECT_TRUE(canUpdate(*movie_, {}));
  EXPECT_EQ(test::contentOf(file_.path()), content_);
  EXPECT_TRUE(saveMetadata(*movie_, edits()));
}

TEST_F(OpenedMovie, IsNotLostToALimitOfFileSizes) {
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  for (const std::size_t room : {0U, 4U, 8U, 100U}) {
    const rlimit tight{content_.size() + room, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tight), 0);
    const auto outcome = saveMetadata(*movie_, edits());
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    ASSERT_FALSE(outcome);
    EXPECT_NE(outcome.error().reason().find("larger than is allowed"), std::string::npos) << outcome.error().reason();
    EXPECT_EQ(test::contentOf(file_.path()), content_);
  }
  EXPECT_TRUE(saveMetadata(*movie_, edits()));
}

TEST_F(OpenedMovie, SaysInASentenceWhyItIsNotSaved) {
  EXPECT_EQ((MovieError{"a.mov", "moov", 8, Reason::Fragmented}.message(Attempt::Save)),
            "Cannot save \"a.mov\": the movie is fragmented (atom moov at offset 8).");
  EXPECT_EQ((MovieError{{}, {}, 0, Reason::Fragmented}.message(Attempt::Save)),
            "Cannot save the movie: the movie is fragmented.");
}

TEST(LargeMovie, IsSavedBehindFourGigabytesAtTheCostOfItsMovieAtom) {
  constexpr std::uint64_t gigabyte = std::uint64_t{1} << 30;
  MovieSpec large;
  large.tracks[0].wideOffsets = true;
  large.tracks[0].chunkOffsets = {5 * gigabyte};
  large.more = {text("uuid", 3000)};
  Bytes content = joined({fileType("qt  "), large.build(), AtomBuilder("mdat").u64(0).build()});
  const std::uint64_t dataAt = content.size() - 16;
  write32(content, static_cast<std::size_t>(dataAt), 1);
  write32(content, static_cast<std::size_t>(dataAt) + 8, static_cast<std::uint32_t>((6 * gigabyte) >> 32));
  write32(content, static_cast<std::size_t>(dataAt) + 12, static_cast<std::uint32_t>(6 * gigabyte));
  const TemporaryFile file(content);
  file.resize(dataAt + 6 * gigabyte);
  const auto movie = MovieFile::open(file.path());
  ASSERT_TRUE(movie) << movie.error().message();
  const auto outcome = saveMetadata(**movie, edits());
  ASSERT_TRUE(outcome) << outcome.error().message();
  EXPECT_EQ(outcome->place, SavePlace::Tail);
  EXPECT_TRUE(outcome->mediaNowPrecedeMovie);
  const auto after = MovieFile::open(file.path());
  ASSERT_TRUE(after) << after.error().message();
  EXPECT_EQ((*after)->movieAtomOffset(), dataAt + 6 * gigabyte);
  EXPECT_EQ((*after)->tracks()[0].sampleDescriptions[0], edits()[0].entry);
  EXPECT_EQ((*after)->size(), (*after)->movieAtomOffset() + (*after)->movieAtom().size());
  struct stat status {};
  ASSERT_EQ(::stat(file.path().c_str(), &status), 0);
  EXPECT_LT(status.st_blocks * 512, 200'000);
}

TEST(ZerosAtTheEnd, AreCutByASaveUpToTheLengthOfTheLargestMovieAtomAndAHeader) {
  constexpr std::uint64_t most = MovieFile::maximumMovieAtomSize + 8;
  const Bytes content = joined({data, movieAt(28)});
  const TemporaryFile file(content);
  file.resize(content.size() + most + 1);
  const auto longer = canUpdate(*MovieFile::open(file.path()).value(), edits());
  ASSERT_FALSE(longer);
  EXPECT_NE(longer.error().reason().find("no size of its own"), std::string::npos) << longer.error().message();

  file.resize(content.size() + most);
  const auto outcome = saveMetadata(*MovieFile::open(file.path()).value(), edits());
  ASSERT_TRUE(outcome) << outcome.error().message();
  EXPECT_LT(std::filesystem::file_size(file.path()), 2 * content.size() + 100);
}

TEST_F(OpenedMovie, CanBeSavedOnceTheReasonOfAFailureIsGone) {
  for (const std::size_t at : {0U, 1U, 2U}) {
    std::size_t left = at;
    FaultyCalls calls([&left](FaultyCalls::Call call, std::size_t) {
      return FaultyCalls::Fault{call == FaultyCalls::Call::Write && left-- == 0 ? EIO : 0, false};
    });
    const auto outcome = saveMetadata(*movie_, edits(), calls);
    ASSERT_FALSE(outcome) << at;
    EXPECT_EQ(test::contentOf(file_.path()), content_);
  }
  EXPECT_TRUE(saveMetadata(*movie_, edits()));
}

}  // namespace
}  // namespace movie
