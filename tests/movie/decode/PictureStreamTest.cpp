#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/movie/decode/Codings.h"
#include "tests/movie/decode/DecodedMovie.h"

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

StreamRequest requestFor(const PresentedSample& sample) {
  return {.picture = {.sample = sample, .crop = {}}};
}

std::uint32_t checksumOf(PictureStream& stream, const StreamRequest& request) {
  auto picture = stream.picture(request);
  if (!picture) throw std::runtime_error(picture.error().message());
  if (!*picture) throw std::runtime_error("given up by itself");
  return firstPlaneChecksum(**picture);
}

class PictureStreamOf : public testing::TestWithParam<Coding> {
 protected:
  const std::string path = movieOf(GetParam());
  const FullDecode judge = fullDecode(path, "y");
  const DecodedMovie movie{path};
  const std::vector<PresentedSample> samples = presented(movie.table());
  const std::unique_ptr<PictureStream> stream = movie.stream();

  void expectSame(const StreamRequest& request) {
    const std::int64_t time = request.picture.sample.presentationTime;
    ASSERT_EQ(checksumOf(*stream, request), judge.checksumAt(time)) << "at " << time;
  }
};

TEST_P(PictureStreamOf, ShowsEveryFrameInARow) {
  for (const PresentedSample& sample : samples) ASSERT_NO_FATAL_FAILURE(expectSame(requestFor(sample)));
}

TEST_P(PictureStreamOf, GoesOnFromAnyFrame) {
  for (std::size_t i = 0; i < samples.size(); i += 3) {
    // Backwards between the runs, so that every run begins with a seek.
    const std::size_t first = samples.size() - 1 - i;
    for (std::size_t n = first; n < std::min(first + 4, samples.size()); ++n) {
      ASSERT_NO_FATAL_FAILURE(expectSame(requestFor(samples[n])));
    }
  }
}

TEST_P(PictureStreamOf, LeavesOutWhatIsNotWanted) {
  for (const std::size_t step : {2U, 3U, 7U, 40U}) {
    for (std::size_t n = 0; n < samples.size(); n += step) {
      StreamRequest request = requestFor(samples[n]);
      if (n + step < samples.size()) request.nextTime = samples[n + step].presentationTime;
      ASSERT_NO_FATAL_FAILURE(expectSame(request));
    }
  }
}

TEST_P(PictureStreamOf, GivesWhatWasToBeLeftOutAfterAll) {
  std::mt19937 random(3);
  for (std::size_t n = 0; n < samples.size(); n += 1 + random() % 4) {
    StreamRequest request = requestFor(samples[n]);
    request.nextTime = samples[std::min(n + 6, samples.size() - 1)].presentationTime;
    ASSERT_NO_FATAL_FAILURE(expectSame(request));
  }
}

TEST_P(PictureStreamOf, JumpsAbout) {
  std::mt19937 random(11);
  for (int i = 0; i < 60; ++i) {
    ASSERT_NO_FATAL_FAILURE(expectSame(requestFor(samples[random() % samples.size()])));
  }
}

TEST_P(PictureStreamOf, GoesOnAfterBeingGivenUp) {
  std::mt19937 random(5);
  for (int i = 0; i < 60; ++i) {
    StreamRequest request = requestFor(samples[random() % samples.size()]);
    int patience = static_cast<int>(random() % 12);
    request.givenUp = [&patience] { return patience-- <= 0; };
    const auto given = stream->picture(request);
    ASSERT_TRUE(given) << given.error().message();
    request.givenUp = nullptr;
    if (i % 2 == 0) request = requestFor(samples[random() % samples.size()]);
    ASSERT_NO_FATAL_FAILURE(expectSame(request));
  }
}

INSTANTIATE_TEST_SUITE_P(Codings, PictureStreamOf, testing::ValuesIn(codings()),
                         [](const auto& coding) { return std::string(coding.param.name); });

}  // namespace
}  // namespace movie::test
