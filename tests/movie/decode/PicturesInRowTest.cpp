#include <algorithm>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/movie/decode/Codings.h"
#include "tests/movie/decode/DecodedMovie.h"
#include "tests/movie/decode/EditedCopy.h"

namespace movie::test {
namespace {

/// The samples of a movie in the order of presentation.
std::vector<PresentedSample> presented(const SampleTable& table) {
  std::vector<PresentedSample> samples;
  for (std::uint64_t i = 0; i < table.sampleCount(); ++i) {
    samples.push_back(*table.presentedAt(table.presentationTimeOf(i)));
  }
  const auto earlier = [](const auto& a, const auto& b) { return a.presentationTime < b.presentationTime; };
  const auto same = [](const auto& a, const auto& b) { return a.index == b.index; };
  std::sort(samples.begin(), samples.end(), earlier);
  samples.erase(std::unique(samples.begin(), samples.end(), same), samples.end());
  return samples;
}

RowRequest requestFor(const PresentedSample& sample) {
  return {.picture = {.sample = sample, .crop = {}}};
}

std::uint32_t checksumOf(MovieDecoder& decoder, const RowRequest& request) {
  auto picture = decoder.pictureInRow(request);
  if (!picture) throw std::runtime_error(picture.error().message());
  if (!*picture) throw std::runtime_error("given up by itself");
  return firstPlaneChecksum(**picture);
}

class PicturesInRowOf : public testing::TestWithParam<Coding> {
 protected:
  const std::string path = movieOf(GetParam());
  const FullDecode judge = fullDecode(path, "y");
  const DecodedMovie movie{path};
  const std::vector<PresentedSample> samples = presented(movie.table());
  const std::unique_ptr<MovieDecoder> decoder = movie.anotherDecoder();

  void expectSame(const RowRequest& request) {
    const std::int64_t time = request.picture.sample.presentationTime;
    ASSERT_EQ(checksumOf(*decoder, request), judge.checksumAt(time)) << "at " << time;
  }
};

TEST_P(PicturesInRowOf, ShowsEveryFrameInARow) {
  for (const PresentedSample& sample : samples) ASSERT_NO_FATAL_FAILURE(expectSame(requestFor(sample)));
}

TEST_P(PicturesInRowOf, GoesOnFromAnyFrame) {
  for (std::size_t i = 0; i < samples.size(); i += 3) {
    // Backwards between the runs, so that every run begins with a seek.
    const std::size_t first = samples.size() - 1 - i;
    for (std::size_t n = first; n < std::min(first + 4, samples.size()); ++n) {
      ASSERT_NO_FATAL_FAILURE(expectSame(requestFor(samples[n])));
    }
  }
}

TEST_P(PicturesInRowOf, LeavesOutWhatIsNotWanted) {
  for (const std::size_t step : {2U, 3U, 7U, 40U}) {
    for (std::size_t n = 0; n < samples.size(); n += step) {
      RowRequest request = requestFor(samples[n]);
      if (n + step < samples.size()) request.nextTime = samples[n + step].presentationTime;
      ASSERT_NO_FATAL_FAILURE(expectSame(request));
    }
  }
}

TEST_P(PicturesInRowOf, GivesWhatWasToBeLeftOutAfterAll) {
  std::mt19937 random(3);
  for (std::size_t n = 0; n < samples.size(); n += 1 + random() % 4) {
    RowRequest request = requestFor(samples[n]);
    request.nextTime = samples[std::min(n + 6, samples.size() - 1)].presentationTime;
    ASSERT_NO_FATAL_FAILURE(expectSame(request));
  }
}

TEST_P(PicturesInRowOf, JumpsAbout) {
  std::mt19937 random(11);
  for (int i = 0; i < 60; ++i) {
    ASSERT_NO_FATAL_FAILURE(expectSame(requestFor(samples[random() % samples.size()])));
  }
}

TEST_P(PicturesInRowOf, GoesOnAfterBeingGivenUp) {
  std::mt19937 random(5);
  for (int i = 0; i < 60; ++i) {
    RowRequest request = requestFor(samples[random() % samples.size()]);
    int patience = static_cast<int>(random() % 12);
    request.givenUp = [&patience] { return patience-- <= 0; };
    const auto given = decoder->pictureInRow(request);
    ASSERT_TRUE(given) << given.error().message();
    request.givenUp = nullptr;
    if (i % 2 == 0) request = requestFor(samples[random() % samples.size()]);
    ASSERT_NO_FATAL_FAILURE(expectSame(request));
  }
}

INSTANTIATE_TEST_SUITE_P(Codings, PicturesInRowOf, testing::ValuesIn(codings()),
                         [](const auto& coding) { return std::string(coding.param.name); });

/// Overwrites bytes in the first third of a movie's media data.
void damage(std::string& bytes) {
  const std::size_t media = bytes.find("mdat") + 4;
  const std::size_t end = bytes.rfind("moov") > media ? bytes.rfind("moov") - 4 : bytes.size();
  std::mt19937 random(21);
  for (int i = 0; i < 12; ++i) {
    const std::size_t at = media + random() % ((end - media) / 3);
    for (std::size_t n = 0; n < 8; ++n) bytes[at + n] = static_cast<char>(random());
  }
}

TEST(PicturesInRow, GoOnThroughDamageAndAreThoseAskedForAloneAfterIt) {
  for (const Coding& coding : codings()) {
    SCOPED_TRACE(coding.name);
    const EditedCopy copy(movieOf(coding), damage);
    const DecodedMovie movie(copy.path());
    const auto decoder = movie.anotherDecoder();
    const std::string name = coding.name;
    const bool recovers = name != "h264OneGop" && name != "h264IntraRefresh";
    for (const PresentedSample& sample : presented(movie.table())) {
      const auto shown = decoder->pictureInRow(requestFor(sample));
      ASSERT_TRUE(!shown || *shown) << "given up by itself";
      if (!recovers || sample.index < movie.table().sampleCount() / 2) continue;
      const auto exact = movie.decoder().picture({.sample = sample, .crop = {}});
      ASSERT_TRUE(shown && exact) << sample.index;
      ASSERT_EQ(firstPlaneChecksum(**shown), firstPlaneChecksum(*exact)) << sample.index;
    }
  }
}

TEST_P(PicturesInRowOf, MayBeAskedForBetweenPicturesAlone) {
  std::mt19937 random(17);
  for (std::size_t n = 0; n + 1 < samples.size(); n += 1 + random() % 9) {
    ASSERT_NO_FATAL_FAILURE(expectSame(requestFor(samples[n])));
    const PresentedSample& other = samples[random() % 2 == 0 ? n : random() % samples.size()];
    const auto alone = decoder->picture({.sample = other, .crop = {}});
    ASSERT_TRUE(alone) << alone.error().message();
    ASSERT_EQ(firstPlaneChecksum(*alone), judge.checksumAt(other.presentationTime)) << "at " << other.presentationTime;
    ASSERT_NO_FATAL_FAILURE(expectSame(requestFor(samples[n + 1])));
  }
}

}  // namespace
}  // namespace movie::test
