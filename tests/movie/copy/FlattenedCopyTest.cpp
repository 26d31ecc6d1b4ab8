#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "movie/atoms/MovieEdit.h"
#include "movie/copy/FlattenedCopy.h"
#include "tests/movie/copy/FlattenedMovies.h"

namespace movie {
namespace {

using namespace test;
using testing::ElementsAre;

/// The movie's own movie atom with a gamma put into the first description of its first track.
Bytes recoloured(const MovieFile& movie) {
  ImageDescription description(movie.tracks()[0].sampleDescriptions[0]);
  EXPECT_EQ(description.setGamma(0x1CCCD), noErr);
  auto edited = editedMovieAtom(movie.movieAtom(), {{0, 0, description.bytes()}});
  if (!edited) throw std::runtime_error(edited.error().message());
  return *edited;
}

Result<void> flattened(const std::string& from, const std::string& to, const CopyProgress& progress = {}) {
  const auto movie = openedMovie(from);
  return writeFlattenedCopy(*movie, recoloured(*movie), to, progress);
}

struct LayoutRow {
  const char* name;
  MovieParts movie;
  std::vector<std::string> expected;  ///< the top-level atoms of the copy
  friend void PrintTo(const LayoutRow& row, std::ostream* out) { *out << row.name; }
};

class FlattenedLayouts : public testing::TestWithParam<LayoutRow> {};

TEST_P(FlattenedLayouts, KeepEverySampleAndTakeTheNewDescription) {
  const TemporaryFolder folder;
  const Bytes original = GetParam().movie.build();
  const std::string from = folder.add("from.mov", original), to = folder.path("to.mov");
  const auto status = flattened(from, to);
  ASSERT_TRUE(status) << status.error().message();
  EXPECT_EQ(topLevelTypes(to), GetParam().expected);
  EXPECT_EQ(samplesOf(to), samplesOf(from));
  EXPECT_EQ(ImageDescription(openedMovie(to)->tracks()[0].sampleDescriptions[0]).gamma(), 0x1CCCD);
  EXPECT_THAT(folder.names(), ElementsAre("from.mov", "to.mov"));
  EXPECT_EQ(contentOf(from), original);
}

const std::vector<std::string> usualLayout{"ftyp", "moov", "free", "mdat"};

INSTANTIATE_TEST_SUITE_P(
    Files, FlattenedLayouts,
    testing::Values(
        LayoutRow{"MovieLast", {{"ftyp", "mdat", "moov"}}, {"ftyp", "mdat", "moov"}},
        LayoutRow{"MovieFirst", {{"ftyp", "moov", "mdat"}}, usualLayout},
        LayoutRow{"MovieInTheMiddle", {{"ftyp", "mdat", "moov", "mdat"}}, {"ftyp", "mdat", "mdat", "moov"}},
        LayoutRow{"SeveralMediaData",
                  {{"ftyp", "moov", "mdat", "free", "mdat", "mdat"}},
                  {"ftyp", "moov", "free", "mdat", "mdat", "mdat"}},
        LayoutRow{"Wide", {{"ftyp", "wide", "mdat", "moov"}}, {"ftyp", "mdat", "moov"}},
        LayoutRow{"WideOffsets", {{"ftyp", "moov", "free", "mdat"}, true}, usualLayout},
        LayoutRow{"OpenEndedMediaData", {{"ftyp", "moov", "mdat0"}}, usualLayout},
        LayoutRow{"MediaDataOf64Bits", {{"ftyp", "mdat64", "mdat", "moov"}}, {"ftyp", "mdat", "mdat", "moov"}},
        LayoutRow{"FreeAllOver",
                  {{"free", "ftyp", "skip", "moov", "free", "mdat", "free", "mdat", "skip"}},
                  {"ftyp", "moov", "free", "mdat", "mdat"}},
        LayoutRow{"OtherAtoms",
                  {{"ftyp", "uuid", "moov", "uuid", "mdat", "uuid"}},
                  {"ftyp", "uuid", "moov", "free", "uuid", "mdat", "uuid"}},
        LayoutRow{"ChunksInsideAFree", {{"ftyp", "chunks", "moov", "mdat"}}, {"ftyp", "mdat", "mdat", "moov"}},
        LayoutRow{"JunkAtTheEnd", {{"ftyp", "mdat", "moov", "junk"}}, {"ftyp", "mdat", "moov"}},
        LayoutRow{"ZerosAtTheEnd", {{"ftyp", "moov", "mdat", "zeros"}}, usualLayout},
        LayoutRow{"AnotherMovieAtom", {{"ftyp", "mdat", "moov", "otherMoov"}}, {"ftyp", "mdat", "moov"}},
        LayoutRow{"WithoutType", {{"mdat", "moov"}}, {"mdat", "moov"}},
        LayoutRow{"Compressed", {{"ftyp", "mdat", "cmov"}}, {"ftyp", "mdat", "moov"}},
        LayoutRow{"CompressedFirst", {{"ftyp", "cmov", "mdat64"}}, usualLayout}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace movie
