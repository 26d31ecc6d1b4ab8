#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "check/GammaCheck.h"
#include "tests/check/BuiltMovie.h"
#include "tests/check/CapturedLog.h"

namespace check {
namespace {

using movie::Bytes;
using movie::Movie;
using namespace movie::test;
using test::movieFile;
using test::opened;
using testing::ElementsAre;
using Report = std::vector<ReportParagraph>;

const Report opening{{QStringLiteral("Checking files..."), ReportStyle::Normal}};

Report operator+(Report report, const Report& more) {
  report.insert(report.end(), more.begin(), more.end());
  return report;
}

Report withoutPixelShift(bool mismatch) {
  RecordedReport report;
  reportPixels(0, mismatch, report);
  return report.paragraphs();
}

/// No frame can be had from these: the codec exists nowhere.
Bytes entryOf(const std::vector<Bytes>& extensions) {
  ImageEntry entry;
  entry.codec = "none";
  entry.extensions = extensions;
  return entry.build();
}

struct Checked {
  CheckOutcome outcome;
  Report report;
};

Checked checkOf(const Bytes& source, const Bytes& dest) {
  const TemporaryFile sourceFile(source), destFile(dest);
  const auto sourceMovie = opened(sourceFile), destMovie = opened(destFile);
  RecordedReport report;
  CheckOutcome outcome = runGammaCheck({*sourceMovie, *destMovie, {}, {}}, report);
  return {std::move(outcome), report.paragraphs()};
}

/// How one property stands on the two sides, and what the report says of it.
struct PropertyCase {
  std::vector<Bytes> source, dest;  ///< extensions
  Report lines;
  bool match;
};

Report lines(const char* source, const char* dest, const char* verdict, bool match) {
  return {{QString::fromLatin1(source), ReportStyle::Normal},
          {QString::fromLatin1(dest), ReportStyle::Normal},
          {QString::fromLatin1(verdict), match ? ReportStyle::Bold : ReportStyle::BoldError}};
}

PropertyCase gammaCase(std::vector<Bytes> source, std::vector<Bytes> dest, const char* sourceLine, const char* destLine,
                       bool match) {
  const char* verdict =
      match ? "Source and destination gamma metadata match." : "Source and destination gamma metadata do not match.";
  return {std::move(source), std::move(dest), lines(sourceLine, destLine, verdict, match), match};
}

std::vector<PropertyCase> gammaCases() {
  const char* noSource = "Source file has no gamma metadata set.";
  const char* noDest = "Destination file has no gamma metadata set.";
  const char* source22 = "Source gamma metadata: 2.20";
  const char* dest22 = "Destination gamma metadata: 2.20";
  return {gammaCase({}, {}, noSource, noDest, true),
          gammaCase({gamaExtension(0x23333)}, {gamaExtension(0x23333)}, source22, dest22, true),
          gammaCase({gamaExtension(0x23333)}, {gamaExtension(0x23334)}, source22, dest22, false),
          gammaCase({gamaExtension(0x23333)}, {}, source22, noDest, false),
          gammaCase({}, {gamaExtension(0x1CCCD)}, noSource, "Destination gamma metadata: 1.80", false),
          gammaCase({gamaExtension(0)}, {}, noSource, noDest, true),
          gammaCase({gamaExtension(-0x10000)}, {gamaExtension(0x20000)}, "Source gamma metadata: -1.00",
                    "Destination gamma metadata: 2.00", false)};
}

PropertyCase colorCase(std::vector<Bytes> source, std::vector<Bytes> dest, bool match) {
  const char* sourceLine = source.empty() ? "Source file has no color metadata set." : "Source color metadata is set.";
  const char* destLine =
      dest.empty() ? "Destination file has no color metadata set." : "Destination color metadata is set.";
  const char* verdict =
      match ? "Source and destination color metadata match." : "Source and destination color metadata do not match.";
  return {std::move(source), std::move(dest), lines(sourceLine, destLine, verdict, match), match};
}

std::vector<PropertyCase> colorCases() {
  const Bytes bt709 = nclcExtension(1, 1, 1);
  return {colorCase({}, {}, true),
          colorCase({bt709}, {bt709}, true),
          colorCase({bt709}, {nclxExtension(1, 1, 1, 0x80)}, true),
          colorCase({bt709}, {nclcExtension(1, 1, 6)}, false),
          colorCase({bt709}, {}, false),
          colorCase({}, {nclcExtension(0, 0, 0)}, false)};
}

PropertyCase profileCase(std::vector<Bytes> source, std::vector<Bytes> dest, bool match) {
  const char* sourceLine =
      source.empty() ? "Source file has no color space metadata set." : "Source color space metadata is set.";
  const char* destLine =
      dest.empty() ? "Destination file has no color space metadata set." : "Destination color space metadata is set.";
  const char* verdict = match ? "Source and destination color space metadata match."
                              : "Source and destination color space metadata do not match.";
  return {std::move(source), std::move(dest), lines(sourceLine, destLine, verdict, match), match};
}

std::vector<PropertyCase> profileCases() {
  const Bytes one{1, 2, 3, 4}, other{1, 2, 3, 5};
  return {
      profileCase({}, {}, true), profileCase({profileExtension("prof", one)}, {profileExtension("rICC", one)}, true),
      profileCase({profileExtension("prof", one)}, {profileExtension("prof", other)}, false),
      profileCase({profileExtension("prof", one)}, {}, false), profileCase({}, {profileExtension("prof", one)}, false)};
}

std::vector<Bytes> together(const std::vector<Bytes>& a, const std::vector<Bytes>& b, const std::vector<Bytes>& c) {
  std::vector<Bytes> all = a;
  all.insert(all.end(), b.begin(), b.end());
  all.insert(all.end(), c.begin(), c.end());
  return all;
}

TEST(GammaCheck, ReportsEveryCombinationOfMetadataWordForWord) {
  for (const PropertyCase& gamma : gammaCases()) {
    for (const PropertyCase& color : colorCases()) {
      for (const PropertyCase& profile : profileCases()) {
        const Checked checked = checkOf(movieFile({entryOf(together(gamma.source, color.source, profile.source))}),
                                        movieFile({entryOf(together(gamma.dest, color.dest, profile.dest))}));
        const bool mismatch = !gamma.match || !color.match || !profile.match;
        ASSERT_EQ(checked.report, opening + gamma.lines + color.lines + profile.lines + withoutPixelShift(mismatch));
        ASSERT_TRUE(checked.outcome.metadata);
        EXPECT_EQ(checked.outcome.metadata->gammaMatch, gamma.match);
        EXPECT_EQ(checked.outcome.metadata->colorMatch, color.match);
        EXPECT_EQ(checked.outcome.metadata->colorSpaceMatch, profile.match);
        EXPECT_EQ(checked.outcome.metadata->mismatch(), mismatch);
      }
    }
  }
}

TEST(GammaCheck, LooksAtTheFirstDescriptionAndTheFirstOfEachAtomOnly) {
  const Bytes first = entryOf({gamaExtension(0x23333), nclcExtension(1, 1, 1)});
  const Bytes source = movieFile({first, entryOf({gamaExtension(0x10000)})});
  const Bytes dest = movieFile(
      {entryOf({gamaExtension(0x23333), gamaExtension(0x10000), nclcExtension(1, 1, 1), nclxExtension(9, 16, 9, 0)})});
  const Checked checked = checkOf(source, dest);
  EXPECT_FALSE(checked.outcome.metadata->mismatch());
}

TEST(GammaCheck, SkipsTheMetadataWithoutAWordWhenEitherMovieHasNoVideoTrack) {
  const Bytes video = movieFile({entryOf({gamaExtension(0x23333)})});
  const Bytes sound = movieFile({}, "soun");
  for (const auto& [source, dest] : {std::pair(video, sound), std::pair(sound, video), std::pair(sound, sound)}) {
    const test::CapturedLog log;
    const Checked checked = checkOf(source, dest);
    EXPECT_EQ(checked.report, opening + withoutPixelShift(false));
    EXPECT_FALSE(checked.outcome.metadata);
    EXPECT_THAT(log.texts(), testing::Not(testing::Contains(testing::HasSubstr("ImageDescription"))));
  }
}

TEST(GammaCheck, TreatsAMissingFrameAsAnEmptyBitmapAndSaysWhichItWas) {
  const Bytes file = movieFile({entryOf({})});
  const Checked checked = checkOf(file, file);
  EXPECT_TRUE(checked.outcome.sourceFrameError);
  EXPECT_TRUE(checked.outcome.destFrameError);
  EXPECT_FALSE(checked.outcome.tooDark);
  ASSERT_TRUE(checked.outcome.pixels);
  EXPECT_EQ(checked.outcome.pixels->commonDiff, 0);
}

TEST(GammaCheck, LogsItsStepsInOrder) {
  const Report verdict = withoutPixelShift(true);
  const test::CapturedLog log;
  checkOf(movieFile({entryOf({}), entryOf({})}), movieFile({entryOf({nclcExtension(1, 2, 3)})}));
  const std::string nclc = std::to_string(movie::fourCC("nclc"));
  EXPECT_THAT(
      log.texts(),
      ElementsAre("Checking files...", "Source ImageDescription count: 2", "Dest ImageDescription count: 1",
                  "Source file has no gamma metadata set.", "Destination file has no gamma metadata set.",
                  "Source and destination gamma metadata match.", "Source file has no color metadata set.",
                  "Destination color metadata is set.", "source colorparamtype: 0", "source matrix: 0",
                  "source primaries: 0", "source transferfunction: 0", "dest colorparamtype: " + nclc, "dest matrix: 3",
                  "dest primaries: 1", "dest transferfunction: 2",
                  "Source and destination color metadata do not match.", "Source file has no color space metadata set.",
                  "Destination file has no color space metadata set.",
                  "Source and destination color space metadata match.", "Gamma: 0.000000",
                  verdict[0].text.toStdString(), verdict[1].text.toStdString()));
}

TEST(GammaCheck, ClearsTheConsoleAndStopsPlaybackAfterTheFirstLine) {
  const TemporaryFile file(movieFile({entryOf({})}));
  const auto movie = opened(file);
  RecordedReport report;
  report.outputText(QStringLiteral("of an earlier check"));
  std::vector<Report> atStop;
  const auto stop = [&] {
    atStop.push_back(report.paragraphs());
    return Playheads{};
  };
  runGammaCheck({*movie, *movie, {}, stop}, report);
  EXPECT_THAT(atStop, ElementsAre(opening));
}

TEST(GammaCheck, LeavesTheMastersAsTheyAre) {
  const Bytes entry = entryOf({gamaExtension(0x23333)});
  const TemporaryFile file(movieFile({entry}));
  const auto source = opened(file), dest = opened(file);
  RecordedReport report;
  runGammaCheck({*source, *dest, {}, {}}, report);
  for (const Movie* movie : {source.get(), dest.get()}) {
    EXPECT_EQ(*movie->tracksOfMediaType(movie::videoMedia).front()->media().sampleDescription(1), entry);
  }
}

}  // namespace
}  // namespace check
