#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "check/GammaCheck.h"
#include "check/MetadataSync.h"
#include "movie/render/IccProfile.h"
#include "tests/check/BuiltMovie.h"
#include "tests/check/CapturedLog.h"

namespace check {
namespace {

using movie::Bytes;
using movie::Movie;
using movie::test::ImageEntry;
using movie::test::TemporaryFile;
using test::movieFile;
using test::opened;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr movie::NclcParameters fixedColors{movie::fourCC("nclc"), 1, 1, 1};

movie::ImageDescription descriptionOf(const Movie& movie, std::size_t index = 1) {
  return *movie.tracksOfMediaType(movie::videoMedia).front()->media().imageDescription(index);
}

void expectFixedColors(const Movie& movie) {
  const movie::ImageDescription description = descriptionOf(movie);
  EXPECT_EQ(description.gamma(), 65536);
  EXPECT_EQ(description.nclc(), fixedColors);
  EXPECT_EQ(description.iccProfile(), movie::sRGBProfile());
}

TEST(MatchMetadata, GivesBothMoviesTheFixedColors) {
  ImageEntry tagged;
  tagged.extensions = {movie::test::gamaExtension(0x23333), movie::test::nclcExtension(9, 16, 9)};
  const TemporaryFile sourceFile(movieFile({tagged.build()}));
  const TemporaryFile destFile(movieFile({ImageEntry().build()}));
  const auto source = opened(sourceFile), dest = opened(destFile);
  const test::CapturedLog log;
  matchMetadata(*source, *dest);
  expectFixedColors(*source);
  expectFixedColors(*dest);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(MatchMetadata, AddsTheKindOfColorAtomThatTheFileTypeAsksFor) {
  const TemporaryFile sourceFile(movieFile({ImageEntry().build()}));
  const TemporaryFile destFile(movieFile({ImageEntry().build()}, "vide", "isom"));
  const auto source = opened(sourceFile), dest = opened(destFile);
  matchMetadata(*source, *dest);
  EXPECT_FALSE(descriptionOf(*source).nclxFullRange());
  EXPECT_EQ(descriptionOf(*dest).nclxFullRange(), false);
}

TEST(MatchMetadata, TouchesOnlyTheFirstDescriptionAndNotTheFile) {
  const std::vector<Bytes> entries{ImageEntry().build(), ImageEntry().build()};
  const TemporaryFile file(movieFile(entries));
  const auto source = opened(file), dest = opened(file);
  matchMetadata(*source, *dest);
  EXPECT_EQ(descriptionOf(*source, 2).bytes(), entries[1]);
  EXPECT_EQ(descriptionOf(*opened(file)).bytes(), entries[0]);
}

TEST(MatchMetadata, DoesNothingWhenEitherMovieHasNoVideoTrack) {
  const TemporaryFile videoFile(movieFile({ImageEntry().build()}));
  const TemporaryFile soundFile(movieFile({}, "soun"));
  const test::CapturedLog log;
  for (const bool videoFirst : {true, false}) {
    const auto video = opened(videoFile), sound = opened(soundFile);
    videoFirst ? matchMetadata(*video, *sound) : matchMetadata(*sound, *video);
    EXPECT_EQ(descriptionOf(*video).bytes(), ImageEntry().build());
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(MatchMetadata, LogsEachFailedWriteAndGoesOn) {
  // Too short for an image description: every edit is refused.
  const TemporaryFile shortFile(movieFile({movie::test::AtomBuilder("apch").zeros(20).build()}));
  const TemporaryFile goodFile(movieFile({ImageEntry().build()}));
  const auto good = opened(goodFile), broken = opened(shortFile);
  {
    const test::CapturedLog log;
    matchMetadata(*opened(shortFile), *broken);
    EXPECT_THAT(log.texts(),
                ElementsAre("Error setting source gamma: -50", "Error setting dest gamma: -50",
                            "Error setting source color: -50", "Error setting dest color: -50",
                            "Error setting source color space: -50", "Error setting dest color space: -50"));
  }
  const test::CapturedLog log;
  matchMetadata(*good, *broken);
  EXPECT_THAT(log.texts(), ElementsAre("Error setting dest gamma: -50", "Error setting dest color: -50",
                                       "Error setting dest color space: -50"));
  expectFixedColors(*good);
}

TEST(MatchMetadata, LogsFailuresForAMovieWithoutAnyDescription) {
  const TemporaryFile emptyFile(movieFile({}));
  const auto source = opened(emptyFile), dest = opened(emptyFile);
  const test::CapturedLog log;
  matchMetadata(*source, *dest);
  EXPECT_EQ(log.texts().size(), 6U);
}

// The sync.

/// The colour metadata of one side; what is not given is absent.
struct Tags {
  std::optional<std::int32_t> gamma = std::nullopt;
  std::optional<movie::NclcParameters> color = std::nullopt;
  std::optional<Bytes> profile = std::nullopt;

  Bytes entry() const {
    ImageEntry entry;
    if (gamma) entry.extensions.push_back(movie::test::gamaExtension(*gamma));
    if (color) {
      entry.extensions.push_back(movie::test::nclcExtension(color->primaries, color->transferFunction, color->matrix));
    }
    if (profile) entry.extensions.push_back(movie::test::profileExtension("prof", *profile));
    return entry.build();
  }
};

constexpr movie::NclcParameters hdColors{movie::fourCC("nclc"), 1, 1, 1}, sdColors{movie::fourCC("nclc"), 6, 1, 6};
constexpr movie::NclcParameters noPrimaries{movie::fourCC("nclc"), 0, 1, 6};
const Bytes someProfile{1, 2, 3, 4}, otherProfile{5, 6, 7};

/// The log of a sync without the eight lines in which every comparison shows both records.
std::vector<std::string> told(const test::CapturedLog& log) {
  std::vector<std::string> texts = log.texts();
  const auto isRecord = [](const std::string& text) {
    return text.starts_with("source ") || text.starts_with("dest ");
  };
  std::erase_if(texts, isRecord);
  return texts;
}

struct SyncRow {
  const char* what;
  Tags source, dest, expected;
  std::vector<std::string> log;
};

TEST(SyncMetadata, CopiesEachPropertyThatDiffers) {
  const std::string spaces = "Color spaces do not match";
  const std::string noSpace = "Error removing destination color space: -8971";
  const SyncRow rows[] = {
      {"gamma set",
       {.gamma = 0x23333},
       {.gamma = 0x1CCCD},
       {.gamma = 0x23333},
       {"Gamma does not match", spaces, noSpace}},
      {"gamma added", {.gamma = 0x23333}, {}, {.gamma = 0x23333}, {"Gamma does not match", spaces, noSpace}},
      {"gamma removed", {}, {.gamma = 0x23333}, {}, {"Gamma does not match", spaces, noSpace}},
      {"a gamma of 0 is none", {.gamma = 0}, {}, {}, {spaces, noSpace}},
      {"nothing at all", {}, {}, {}, {spaces, noSpace}},
      {"colors set",
       {.color = hdColors},
       {.color = sdColors},
       {.color = hdColors},
       {"Colors do not match", spaces, noSpace}},
      {"colors added", {.color = hdColors}, {}, {.color = hdColors}, {"Colors do not match", spaces, noSpace}},
      {"colors stay: their removal fails",
       {},
       {.color = sdColors},
       {.color = sdColors},
       {"Colors do not match", "Error removing destination color atom: -8971", spaces, noSpace}},
      {"colors without primaries count as none",
       {.color = noPrimaries},
       {.color = sdColors},
       {.color = sdColors},
       {"Colors do not match", "Error removing destination color atom: -8971", spaces, noSpace}},
      {"profile set", {.profile = someProfile}, {.profile = otherProfile}, {.profile = someProfile}, {spaces}},
      {"profile added", {.profile = someProfile}, {}, {.profile = someProfile}, {spaces}},
      {"profile stays: its removal fails", {}, {.profile = otherProfile}, {.profile = otherProfile}, {spaces, noSpace}},
      {"all equal",
       {0x23333, hdColors, someProfile},
       {0x23333, hdColors, someProfile},
       {0x23333, hdColors, someProfile},
       {}},
      {"all set",
       {0x23333, hdColors, someProfile},
       {0x10000, sdColors, otherProfile},
       {0x23333, hdColors, someProfile},
       {"Gamma does not match", "Colors do not match", spaces}},
  };
  for (const SyncRow& row : rows) {
    const TemporaryFile sourceFile(movieFile({row.source.entry()})), destFile(movieFile({row.dest.entry()}));
    const auto source = opened(sourceFile), dest = opened(destFile);
    const test::CapturedLog log;
    const SyncOutcome outcome = syncMetadata(*source, *dest);
    EXPECT_EQ(told(log), row.log) << row.what;
    EXPECT_TRUE(outcome.writtenBack) << row.what;
    EXPECT_EQ(descriptionOf(*dest).gamma(), row.expected.gamma) << row.what;
    EXPECT_EQ(descriptionOf(*dest).nclc(), row.expected.color) << row.what;
    EXPECT_EQ(descriptionOf(*dest).iccProfile(), row.expected.profile) << row.what;
    EXPECT_EQ(outcome.after->bytes(), descriptionOf(*dest).bytes()) << row.what;
    EXPECT_EQ(outcome.before->bytes(), row.dest.entry()) << row.what;
    EXPECT_EQ(descriptionOf(*source).bytes(), row.source.entry()) << row.what;
  }
}

TEST(SyncMetadata, TellsWhatItDid) {
  const TemporaryFile sourceFile(movieFile({Tags{.gamma = 0x23333, .profile = someProfile}.entry()}));
  const TemporaryFile destFile(movieFile({Tags{.color = sdColors}.entry()}));
  const auto source = opened(sourceFile), dest = opened(destFile);
  const SyncOutcome outcome = syncMetadata(*source, *dest);
  ASSERT_EQ(outcome.changes.size(), 3U);
  EXPECT_EQ(outcome.changes[0].property, ColorProperty::Gamma);
  EXPECT_EQ(outcome.changes[0].edit, PropertyEdit::Set);
  EXPECT_EQ(outcome.changes[1].property, ColorProperty::Color);
  EXPECT_EQ(outcome.changes[1].edit, PropertyEdit::Remove);
  EXPECT_EQ(outcome.changes[1].result, movie::codecExtensionNotFoundErr);
  EXPECT_EQ(outcome.changes[2].property, ColorProperty::ColorSpace);
  EXPECT_EQ(outcome.changes[2].result, movie::noErr);
  EXPECT_TRUE(outcome.writtenBack);
}

TEST(SyncMetadata, ComparesGammaInSinglePrecisionAsTheCheckDoes) {
  const struct {
    std::int32_t source, dest;
    bool match;
  } rows[] = {{0x7FFFFFFF, 0x7FFFFFD0, true},
              {-0x7FFFFFFF, -0x7FFFFFD0, true},
              {0x7FFFFF00, 0x7FFFFE80, false},
              {0x23333, 0x23334, false}};
  for (const auto& row : rows) {
    const TemporaryFile sourceFile(movieFile({Tags{.gamma = row.source}.entry()}));
    const TemporaryFile destFile(movieFile({Tags{.gamma = row.dest}.entry()}));
    const auto source = opened(sourceFile), dest = opened(destFile);
    RecordedReport report;
    EXPECT_EQ(runGammaCheck({*source, *dest, {}, {}}, report).metadata->gammaMatch, row.match) << row.source;
    const test::CapturedLog log;
    syncMetadata(*source, *dest);
    EXPECT_EQ(told(log).front() == "Gamma does not match", !row.match) << row.source;
    EXPECT_EQ(descriptionOf(*dest).gamma(), row.match ? row.dest : row.source);
  }
}

TEST(SyncMetadata, EndsWithNothingWrittenBackAtTheFirstSettingThatFails) {
  const struct {
    Tags source;
    std::vector<std::string> log;
  } rows[] = {
      {{0x23333, hdColors, someProfile}, {"Gamma does not match", "Error setting gamma: -50"}},
      {{.color = hdColors, .profile = someProfile}, {"Colors do not match", "Error setting color: -50"}},
      {{.profile = someProfile}, {"Color spaces do not match", "Error setting colorspace: -50"}},
  };
  // Without any tag, and every edit of it is refused.
  const Bytes tooShort = movie::test::AtomBuilder("apch").zeros(20).build();
  for (const auto& row : rows) {
    const TemporaryFile sourceFile(movieFile({row.source.entry()})), destFile(movieFile({tooShort}));
    const auto source = opened(sourceFile), dest = opened(destFile);
    const test::CapturedLog log;
    const SyncOutcome outcome = syncMetadata(*source, *dest);
    EXPECT_EQ(told(log), row.log);
    EXPECT_FALSE(outcome.writtenBack) << row.log.back();
    EXPECT_EQ(outcome.changes.size(), 1U) << row.log.back();
    EXPECT_EQ(outcome.after->bytes(), outcome.before->bytes()) << row.log.back();
    EXPECT_EQ(descriptionOf(*dest).bytes(), tooShort) << row.log.back();
  }
}

TEST(SyncMetadata, DoesNothingWhenEitherMovieHasNoVideoTrack) {
  const TemporaryFile videoFile(movieFile({Tags{.gamma = 0x23333}.entry()})), soundFile(movieFile({}, "soun"));
  const auto video = opened(videoFile), sound = opened(soundFile);
  const test::CapturedLog log;
  EXPECT_FALSE(syncMetadata(*video, *sound).before);
  EXPECT_FALSE(syncMetadata(*sound, *video).writtenBack);
  EXPECT_THAT(log.texts(), IsEmpty());
}

}  // namespace
}  // namespace check
