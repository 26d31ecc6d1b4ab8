#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "movie/copy/ExternalMedia.h"
#include "movie/copy/FlattenedCopy.h"
#include "tests/movie/copy/FlattenedMovies.h"

namespace movie {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;

Bytes text(std::string_view words) {
  return Bytes(words.begin(), words.end());
}

Bytes address(std::string_view where) {
  return AtomBuilder("url ").u32(0).bytes(text(where)).u8(0).build();
}

/// An alias record of version 2. `unicode` (ASCII here) and `path` are left out when empty.
Bytes alias(std::string_view name, std::string_view unicode, std::string_view path, const char* type = "alis") {
  AtomBuilder atom(type);
  atom.u32(0).zeros(6).u16(2).zeros(42).u8(static_cast<unsigned>(name.size())).bytes(text(name));
  atom.zeros(63 - name.size()).zeros(36);
  if (!unicode.empty()) {
    atom.u16(14).u16(static_cast<unsigned>(2 + 2 * unicode.size())).u16(static_cast<unsigned>(unicode.size()));
    for (const char letter : unicode) atom.u16(static_cast<unsigned char>(letter));
  }
  if (!path.empty()) {
    atom.u16(18).u16(static_cast<unsigned>(path.size())).bytes(text(path));
    if (path.size() % 2 != 0) atom.u8(0);
  }
  return atom.u16(0xFFFF).u16(0).build();
}

Bytes counted(std::size_t size, unsigned step) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * step % 253);
  return bytes;
}

Bytes slice(const Bytes& bytes, std::size_t begin, std::size_t size) {
  return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(begin),
               bytes.begin() + static_cast<std::ptrdiff_t>(begin + size));
}

/// ftyp, 64 bytes of media data of its own (chunk of track 1 at 28), and a track 2 whose chunks are elsewhere.
MovieSpec halfExternal(const Bytes& reference) {
  MovieSpec movie;
  TrackSpec own, other;
  other.id = 2;
  other.dataReferences = {reference};
  other.sizes = {10, 20, 30, 40};
  other.sampleCount = 4;
  other.durations = {{4, 1}};
  other.chunks = {{1, 1, 1}};
  other.chunkOffsets = {100, 5, 300, 5};
  movie.tracks = {own, other};
  return movie;
}

Bytes fileOf(const MovieSpec& movie) {
  return test::joined({test::typedMediaData("qt  ", 64), movie.build()});
}

struct NameRow {
  const char* name;
  Bytes reference;
};

TEST(FlattenedExternal, PullsInWhatLiesBesideTheMovieUnderAnyOfItsNames) {
  const Bytes media = counted(400, 7);
  const std::vector<NameRow> rows{{"clip one.mov", address("file:///Volumes/Raid/clip%20one.mov")},
                                  {"clip.mov", address("clip.mov")},
                                  {"100%.mov", address("sub/100%.mov")},
                                  {"clip.mov", alias("clip.mov", "", "")},
                                  {"a longer name.mov", alias("a long#1.mov", "a longer name.mov", "")},
                                  {"named by path.mov", alias("old", "older", "/Users/x/named by path.mov")},
                                  {"12:30.mov", alias("12/30.mov", "", "")}};
  for (const NameRow& row : rows) {
    const TemporaryFolder folder;
    folder.add(row.name, media);
    const std::string from = folder.add("from.mov", fileOf(halfExternal(row.reference))), to = folder.path("to.mov");
    const auto status = copied(from, to);
    ASSERT_TRUE(status) << row.name << ": " << status.error().message();
    const auto samples = test::samplesOf(to);
    EXPECT_THAT(samples[1],
                ElementsAre(slice(media, 100, 10), slice(media, 5, 20), slice(media, 300, 30), slice(media, 5, 40)));
    EXPECT_EQ(samples[0][2], slice(contentOf(from), 48, 10));
    EXPECT_FALSE(openedMovie(to)->tracks()[1].isExternal(0));
    EXPECT_THAT(test::topLevelTypes(to), ElementsAre("ftyp", "mdat", "mdat", "moov"));
    EXPECT_EQ(folder.names().size(), 3U);
  }
}

TEST(FlattenedExternal, CopiesNothingButTheChunksOfTheOtherFile) {
  const TemporaryFolder folder;
  folder.add("clip.mov", counted(1'000'000, 7));
  const std::string from = folder.add("from.mov", fileOf(halfExternal(address("clip.mov")))),
                    to = folder.path("to.mov");
  ASSERT_TRUE(copied(from, to));
  EXPECT_LT(contentOf(to).size(), contentOf(from).size() + 200);
}

TEST(FlattenedExternal, PutsTheChunksOfSeveralFilesInTheOrderOfTheirTimes) {
  const TemporaryFolder folder;
  const Bytes pictures = counted(100, 3), sound = counted(100, 5);
  folder.add("pictures.mov", pictures);
  folder.add("sound.aif", sound);
  MovieSpec movie;
  TrackSpec first, second;
  first.dataReferences = {address("pictures.mov")};
  first.chunks = {{1, 1, 1}};
  first.chunkOffsets = {50, 20, 0};
  second = first;
  second.id = 2;
  second.dataReferences = {address("sound.aif")};
  movie.tracks = {first, second};
  const std::string from = folder.add("from.mov", movie.build()), to = folder.path("to.mov");
  const auto status = copied(from, to);
  ASSERT_TRUE(status) << status.error().message();
  EXPECT_THAT(test::topLevelTypes(to), ElementsAre("moov", "free", "mdat"));
  const Bytes all = contentOf(to);
  EXPECT_EQ(slice(all, all.size() - 60, 60),
            test::joined({slice(pictures, 50, 10), slice(sound, 50, 10), slice(pictures, 20, 10), slice(sound, 20, 10),
                          slice(pictures, 0, 10), slice(sound, 0, 10)}));
}

/// QuickTime tables count the frames of uncompressed sound as samples of one byte.
TEST(FlattenedExternal, TakesWholeFramesOfUncompressedSound) {
  const TemporaryFolder folder;
  const Bytes sound = counted(2000, 11);
  folder.add("sound.aif", sound);
  const auto track = [&](const char* format, unsigned version, unsigned perPacket, unsigned perFrame) {
    TrackSpec spec;
    spec.mediaType = "soun";
    AtomBuilder entry(format);
    entry.zeros(6).u16(1).u16(version).zeros(6).u16(2).u16(16).zeros(4).u32(48000U << 16);
    if (version == 1) entry.u32(perPacket).u32(perFrame / 2).u32(perFrame).u32(2);
    spec.entries = {entry.build()};
    spec.dataReferences = {address("sound.aif")};
    spec.commonSize = 1;
    spec.sampleCount = 128;
    spec.durations = {{128, 1}};
    spec.chunks = {{1, 128, 1}};
    spec.chunkOffsets = {54};
    return spec;
  };
  const std::vector<std::pair<TrackSpec, std::size_t>> rows{
      {track("sowt", 0, 0, 0), 512}, {track("in24", 0, 0, 0), 768},   {track("ulaw", 0, 0, 0), 256},
      {track("ima4", 0, 0, 0), 136}, {track("ima4", 1, 64, 68), 136}, {track("twos", 1, 1, 4), 512}};
  for (const auto& [spec, expected] : rows) {
    MovieSpec movie;
    movie.tracks = {spec};
    const std::string from = folder.add("from.mov", movie.build()), to = folder.path("to.mov");
    const auto status = copied(from, to);
    ASSERT_TRUE(status) << status.error().message();
    const Bytes all = contentOf(to);
    EXPECT_EQ(read32(all, all.size() - expected - 8), expected + 8);
    EXPECT_EQ(slice(all, all.size() - expected, expected), slice(sound, 54, expected));
  }
}

TEST(FlattenedExternal, IsRefusedWithTheNameOfWhatIsMissing) {
  const std::vector<std::pair<Bytes, const char*>> rows{
      {address("file:///media/clip%20one.mov"), "some of its media is in \"clip one.mov\", which is not beside it"},
      {alias("short", "long name.mov", ""), "some of its media is in \"long name.mov\", which is not beside it"},
      {address("../../etc/passwd"), "some of its media is in \"passwd\", which is not beside it"},
      {address(".."), "some of its media is in another file that a reference of type 'url ' does not name"},
      {alias("fork", "", "", "rsrc"), "some of its media is in the resource fork of \"fork\", which cannot be read"},
      {AtomBuilder("urn ").u32(0).u32(7).build(),
       "some of its media is in another file that a reference of type 'urn ' does not name"},
      {address("folder"), "some of its media is in \"folder\", which cannot be read: it is a folder"}};
  for (const auto& [reference, reason] : rows) {
    const TemporaryFolder outer;
    outer.add("passwd", Bytes(1000));
    const TemporaryFolder folder;
    ASSERT_EQ(test::outputOf("mkdir '" + folder.path("folder") + "'"), "");
    const std::string from = folder.add("from.mov", fileOf(halfExternal(reference)));
    const auto status = copied(from, folder.path("to.mov"));
    ASSERT_FALSE(status) << reason;
    EXPECT_EQ(status.error().reason(), reason);
    EXPECT_EQ(status.error().file, from);
    EXPECT_THAT(folder.names(), ElementsAre("folder", "from.mov"));
  }
}

TEST(FlattenedExternal, IsRefusedWhenTheOtherFileIsTooShort) {
  const TemporaryFolder folder;
  folder.add("clip.mov", counted(329, 7));
  const auto status = copied(folder.add("from.mov", fileOf(halfExternal(address("clip.mov")))), folder.path("to.mov"));
  ASSERT_FALSE(status);
  EXPECT_THAT(status.error().reason(), HasSubstr("chunk 3 of track 2 lies past the end of"));
  EXPECT_THAT(folder.names(), ElementsAre("clip.mov", "from.mov"));
}

TEST(FlattenedExternal, FindsTheOtherFileBesideWhatALinkLeadsTo) {
  const TemporaryFolder folder, elsewhere;
  folder.add("clip.mov", counted(400, 7));
  const std::string from = folder.add("from.mov", fileOf(halfExternal(address("clip.mov"))));
  test::outputOf("ln -s '" + from + "' '" + elsewhere.path("link.mov") + "'");
  const auto status = copied(elsewhere.path("link.mov"), elsewhere.path("to.mov"));
  EXPECT_TRUE(status) << status.error().message();
}

}  // namespace
}  // namespace movie
