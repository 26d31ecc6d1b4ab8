#include <atomic>
#include <condition_variable>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "app/player/MoviePlayer.h"
#include "tests/app/player/SoundFixture.h"
#include "tests/support/MovieFixture.h"

namespace player {
namespace {

using movie::MovieTime;
using std::chrono::milliseconds;
using std::chrono::seconds;
using test::openedMovie;

std::string numbered(const char* name, const std::vector<std::string>& options, const char* rate = "25",
                     const char* duration = "4") {
  std::vector<std::string> arguments{"-f", "lavfi", "-i",
                                     std::string("testsrc2=size=160x120:rate=") + rate + ":duration=" + duration};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return movie::test::fixtureMovie(name, arguments);
}
std::string proRes() {
  return numbered("played.mov", {"-c:v", "prores_ks", "-profile:v", "0"});
}
std::string longGop() {
  return numbered("played-gop.mov",
                  {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", "keyint=50:bframes=3:scenecut=0"});
}
std::string fractional() {
  return numbered("played-2398.mov", {"-c:v", "mjpeg", "-q:v", "4", "-movie_timescale", "600"}, "24000/1001");
}
std::string changingRate() {
  return numbered("played-vfr.mov",
                  {"-vf", "select='not(mod(n,3))+not(mod(n,7))'", "-fps_mode", "vfr", "-c:v", "mjpeg", "-q:v", "4"});
}

/// A player with a clock that a test moves, and a wait for frames that come. Its work takes no time, so that no frame
/// is left out, however slow the machine.
class Played {
 public:
  Played()
      : player({.frameArrived = [this] { arrive(); },
                .now = [this] { return now(); },
                .workTime = [] { return MoviePlayer::Clock::time_point(); }}) {}

  MoviePlayer::Clock::time_point now() const {
    return MoviePlayer::Clock::time_point(MoviePlayer::Clock::duration(ticks_));
  }
  void pass(MoviePlayer::Clock::duration time) { ticks_ += time.count(); }
  void passUntil(MoviePlayer::Clock::time_point time) { ticks_ = time.time_since_epoch().count(); }

  /// The frame on screen at the playhead; null when it does not come within a long time.
  std::shared_ptr<const ShownFrame> awaited(const movie::Movie& movie) {
    const auto wanted = movie.frameSpanAt(player.time());
    for (int i = 0; i < 4000; ++i) {
      const auto frame = player.frame();
      if (frame && wanted && frame->time == wanted->start) return frame;
      std::this_thread::sleep_for(milliseconds(5));
    }
    return nullptr;
  }
  int arrived() const { return arrived_; }

 private:
  void arrive() { ++arrived_; }
  std::atomic<MoviePlayer::Clock::rep> ticks_ = 1'000'000'000'000;
  std::atomic<int> arrived_ = 0;

 public:
  MoviePlayer player;
};

MovieTime at(std::int64_t value, std::int32_t scale = 600) {
  return {.value = value, .scale = scale};
}

/// The picture that a movie shows at a time without a player.
std::vector<std::uint8_t> expectedAt(movie::Movie& movie, const MovieTime& time) {
  auto image = movie.frameImageAtTime(time, {.width = 80, .height = 60, .style = movie::FrameStyle::Display});
  if (!image) throw std::runtime_error(image.error().message());
  return image->samples;
}

void expectNear(const std::vector<std::uint8_t>& shown, const std::vector<std::uint8_t>& expected) {
  ASSERT_EQ(shown.size(), expected.size());
  for (std::size_t i = 0; i < shown.size(); ++i) ASSERT_NEAR(shown[i], expected[i], 1) << i;
}

TEST(MoviePlayer, IsEmptyWithoutAMovie) {
  Played played;
  EXPECT_EQ(played.player.frame(), nullptr);
  EXPECT_EQ(played.player.time(), MovieTime{});
  played.player.setTime(at(600));
  played.player.setRate(1);
  EXPECT_EQ(played.player.rate(), 0);
  EXPECT_EQ(played.player.nextChange(), MoviePlayer::Clock::time_point::max());
  played.player.setMovie(nullptr);
  played.player.setMovie(movie::Movie::movie());
  played.player.setRate(1);
  EXPECT_EQ(played.player.rate(), 0);
  EXPECT_EQ(played.player.frame(), nullptr);
}

TEST(MoviePlayer, ShowsTheFrameAtTheTimeOfTheMovieItIsGiven) {
  for (const std::string& path : {proRes(), longGop(), fractional(), changingRate()}) {
    const auto movie = openedMovie(path);
    movie->setCurrentTime(at(777));
    Played played;
    played.player.setPictureSize(80, 60);
    played.player.setMovie(movie->copy());
    EXPECT_EQ(played.player.time(), at(777));
    const auto frame = played.awaited(*movie);
    ASSERT_NE(frame, nullptr);
    EXPECT_FALSE(frame->error);
    expectNear(frame->image.samples, expectedAt(*movie, at(777)));
  }
}

TEST(MoviePlayer, StopsAtTheStartOfTheFrameOnScreen) {
  const auto movie = openedMovie(fractional());
  Played played;
  played.player.setMovie(movie->copy());
  played.player.setRate(1);
  played.pass(milliseconds(1010));
  EXPECT_EQ(played.player.time(), at(1010000, 1000000));
  played.player.setRate(0);
  EXPECT_EQ(played.player.time(), movie->frameSpanAt(at(1010, 1000))->start);
  EXPECT_EQ(played.player.time().scale, movie->timeScale());
  // Playing on begins with that very frame, though its time is written a little before it.
  for (int n = 0; n < 90; ++n) {
    const auto span = movie->frameSpanAt(played.player.time());
    ASSERT_TRUE(span);
    played.player.setRate(1);
    EXPECT_EQ(movie->frameSpanAt(played.player.time())->start, span->start) << n;
    played.passUntil(played.player.nextChange());
    EXPECT_EQ(movie->frameSpanAt(played.player.time())->start, span->end) << n;
    played.player.setRate(0);
    if (span->last || span->sample.index + 2 >= 95) break;
  }
}

TEST(MoviePlayer, EndsAtTheEndAndAtTheBeginning) {
  const auto movie = openedMovie(longGop());
  Played played;
  played.player.setMovie(movie->copy());
  played.player.setRate(1);
  played.pass(seconds(60));
  EXPECT_EQ(played.player.rate(), 0);
  EXPECT_EQ(played.player.time(), movie->duration());
  EXPECT_EQ(played.player.nextChange(), MoviePlayer::Clock::time_point::max());
  EXPECT_NE(played.awaited(*movie), nullptr);
  played.player.setRate(1);
  EXPECT_EQ(played.player.rate(), 0) << "there is nothing left to play";
  played.player.setRate(-1);
  played.pass(milliseconds(500));
  EXPECT_EQ(played.player.rate(), -1);
  played.pass(seconds(60));
  EXPECT_EQ(played.player.time(), at(0, movie->timeScale()));
  EXPECT_EQ(played.player.rate(), 0);
  EXPECT_NE(played.awaited(*movie), nullptr);
}

TEST(MoviePlayer, PlaysOnFromATimeSetWhilePlaying) {
  Played played;
  played.player.setMovie(openedMovie(proRes()));
  played.player.setRate(2);
  played.pass(seconds(1));
  played.player.setTime(at(600));
  EXPECT_EQ(played.player.rate(), 2);
  played.pass(milliseconds(250));
  EXPECT_EQ(played.player.time(), at(1500000, 1000000));
}

/// Moves the clock from change to change and holds every frame against the movie's own.
void playThrough(const std::string& path, double rate, const MovieTime& from) {
  SCOPED_TRACE(path + " " + std::to_string(rate));
  const auto movie = openedMovie(path);
  movie->setCurrentTime(from);
  Played played;
  played.player.setPictureSize(80, 60);
  played.player.setMovie(movie->copy());
  ASSERT_NE(played.awaited(*movie), nullptr);
  played.player.setRate(rate);
  std::this_thread::sleep_for(milliseconds(50));  // the player's thread has planned before the clock moves on
  int frames = 0;
  while (played.player.rate() != 0 && frames < 400) {
    played.passUntil(played.player.nextChange());
    const MovieTime time = played.player.time();
    const auto frame = played.awaited(*movie);
    ASSERT_NE(frame, nullptr) << time.value;
    ASSERT_FALSE(frame->error);
    if (frames++ % 5 == 0) expectNear(frame->image.samples, expectedAt(*movie, time));
  }
  const auto statistics = played.player.statistics();
  EXPECT_EQ(statistics.due, statistics.shown);
  EXPECT_EQ(statistics.due, statistics.inTime) << "the clock waited for every frame";
  EXPECT_GT(statistics.due, 30U);
  EXPECT_LT(frames, 400);
}

TEST(MoviePlayer, PlaysEveryFrameForwards) {
  for (const std::string& path : {proRes(), longGop(), fractional(), changingRate()}) playThrough(path, 1, at(0));
  playThrough(longGop(), 2, at(0));
}

TEST(MoviePlayer, PlaysEveryFrameBackwards) {
  for (const std::string& path : {proRes(), longGop(), fractional(), changingRate()}) playThrough(path, -1, at(2300));
  playThrough(longGop(), -2, at(2300));
}

TEST(MoviePlayer, PlaysWhereManyFramesElsewhereAreHeld) {
  const auto movie = openedMovie(longGop());
  for (const double rate : {1.0, -1.0}) {
    Played played;
    played.player.setMovie(movie->copy());
    for (int value = 0; value < 2400; value += 96) {
      played.player.setTime(at(value));
      ASSERT_NE(played.awaited(*movie), nullptr);
    }
    played.player.setTime(at(1300));
    played.player.setRate(rate);
    for (const int jump : {1300, 300, 2000, 1100}) {
      played.player.setTime(at(jump));
      for (int n = 0; n < 12; ++n) {
        played.passUntil(played.player.nextChange());
        ASSERT_NE(played.awaited(*movie), nullptr) << rate << " from " << jump << ", frame " << n;
      }
    }
  }
}

TEST(MoviePlayer, LandsOnTheLastOfManySeeks) {
  for (const std::string& path : {proRes(), longGop()}) {
    const auto movie = openedMovie(path);
    Played played;
    played.player.setPictureSize(80, 60);
    played.player.setMovie(movie->copy());
    std::mt19937 random(1);
    for (int round = 0; round < 5; ++round) {
      MovieTime last;
      for (int i = 0; i < 200; ++i) {
        last = at(static_cast<std::int64_t>(random() % 2400));
        played.player.setTime(last);
        if (i % 20 == 0) std::this_thread::sleep_for(milliseconds(random() % 4));
        played.player.frame();
      }
      const auto frame = played.awaited(*movie);
      ASSERT_NE(frame, nullptr);
      expectNear(frame->image.samples, expectedAt(*movie, last));
    }
  }
}

TEST(MoviePlayer, HasTheNextFrameReadyForAFollower) {
  const auto movie = openedMovie(longGop());
  Played played;
  played.player.setMovie(movie->copy());
  auto span = movie->frameSpanAt(at(0));
  ASSERT_NE(played.awaited(*movie), nullptr);
  int ready = 0;
  for (int n = 0; n < 40; ++n) {
    span = movie->frameSpanAfter(span->start);
    played.player.setTime(span->start);
    const auto frame = played.player.frame();
    if (frame && frame->time == span->start) ++ready;
    ASSERT_NE(played.awaited(*movie), nullptr);
    std::this_thread::sleep_for(milliseconds(20));
  }
  EXPECT_GE(ready, 30);
}

TEST(MoviePlayer, StepsBackwardsFrameByFrame) {
  const auto movie = openedMovie(longGop());
  movie->setCurrentTime(at(2000));
  Played played;
  played.player.setPictureSize(80, 60);
  played.player.setMovie(movie->copy());
  for (auto span = movie->frameSpanAt(at(2000)); span; span = movie->frameSpanBefore(span->start)) {
    played.player.setTime(span->start);
    const auto frame = played.awaited(*movie);
    ASSERT_NE(frame, nullptr);
    expectNear(frame->image.samples, expectedAt(*movie, span->start));
  }
}

TEST(MoviePlayer, NeverGivesAFrameOfTheMovieBefore) {
  const auto first = openedMovie(longGop()), second = openedMovie(fractional());
  Played played;
  played.player.setPictureSize(80, 60);
  std::mt19937 random(2);
  for (int i = 0; i < 60; ++i) {
    const bool odd = i % 2 != 0;
    const movie::Movie& movie = odd ? *second : *first;
    played.player.setMovie(movie.copy());
    played.player.setTime(at(100 + static_cast<std::int64_t>(random() % 2000)));
    if (i % 5 == 0) played.player.setRate(1);
    for (int n = 0; n < 5; ++n) {
      const auto frame = played.player.frame();
      if (frame) {
        ASSERT_EQ(frame->time.scale, movie.timeScale());
        ASSERT_EQ(movie.frameSpanAt(frame->time)->start, frame->time);
      }
      std::this_thread::sleep_for(milliseconds(random() % 3));
    }
    if (i % 7 == 0) {
      played.player.setMovie(nullptr);
      EXPECT_EQ(played.player.frame(), nullptr);
    }
  }
}

TEST(MoviePlayer, GoesAwayInTheMiddleOfItsWork) {
  const auto movie = openedMovie(longGop());
  std::mt19937 random(3);
  for (int i = 0; i < 40; ++i) {
    Played played;
    played.player.setMovie(movie->copy());
    played.player.setTime(at(static_cast<std::int64_t>(random() % 2400)));
    if (i % 3 != 0) played.player.setRate(i % 3 == 1 ? 1 : -1);
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 6000));
  }
}

TEST(MoviePlayer, GivesTheSizeAskedFor) {
  const auto movie = openedMovie(longGop());
  Played played;
  played.player.setMovie(movie->copy());
  auto frame = played.awaited(*movie);
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->image.width, 160);
  played.player.setPictureSize(33, 44);
  EXPECT_NE(played.player.frame(), nullptr) << "the old one stays until the new one is there";
  for (int i = 0; i < 2000 && frame->image.width != 33; ++i) {
    std::this_thread::sleep_for(milliseconds(5));
    frame = played.player.frame();
  }
  EXPECT_EQ(frame->image.width, 33);
  EXPECT_EQ(frame->image.height, 44);
}

TEST(MoviePlayer, TellsWhyThereIsNoPicture) {
  // Half of the media data is overwritten: a decoder has nothing to go by.
  const std::string source = numbered("played-broken.mov", {"-c:v", "png"});
  std::ifstream stream(source, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(stream), {}};
  const std::size_t media = bytes.find("mdat") + 4;
  std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(media),
            bytes.begin() + static_cast<std::ptrdiff_t>(bytes.find("moov") - 8), '\x55');
  const std::string path = testing::TempDir() + "broken-" + std::to_string(getpid()) + ".mov";
  std::ofstream(path, std::ios::binary) << bytes;
  const auto movie = openedMovie(path);
  std::filesystem::remove(path);
  Played played;
  played.player.setMovie(movie->copy());
  const auto frame = played.awaited(*movie);
  ASSERT_NE(frame, nullptr);
  EXPECT_TRUE(frame->error);
  EXPECT_TRUE(frame->image.samples.empty());
  played.player.setRate(1);
  played.pass(seconds(1));
  EXPECT_NE(played.awaited(*movie), nullptr);
  played.pass(seconds(60));
  EXPECT_EQ(played.player.rate(), 0);
}

TEST(MoviePlayer, PlaysAMovieWithoutPicturesInTheDark) {
  const auto movie = openedMovie(test::soundMovie());
  Played played;
  played.player.setMovie(movie->copy());
  played.player.setRate(1);
  EXPECT_EQ(played.player.frame(), nullptr);
  EXPECT_EQ(played.player.nextChange() - played.now(), seconds(2) + std::chrono::nanoseconds(1));
  played.pass(seconds(1));
  EXPECT_EQ(played.player.time(), at(1000000, 1000000));
  played.pass(seconds(5));
  EXPECT_EQ(played.player.rate(), 0);
  EXPECT_EQ(played.player.time(), movie->duration());
}

/// A player whose pictures take long by a clock of its own: that goes on whenever the player's thread looks at it, and
/// its two threads take turns, so that what is shown does not depend on the machine.
class Belated {
 public:
  Belated() : player({.now = [this] { return now(); }, .workTime = [this] { return turn(); }}) {}
  ~Belated() { over_ = true; }

  /// Looks at the screen, and waits until the player's thread has done something. Where that has nothing to do, the
  /// time of a frame passes.
  std::shared_ptr<const ShownFrame> look() {
    const int before = turns_;
    auto frame = player.frame();
    ++looks_;
    for (int i = 0; i < 2000 && turns_ == before; ++i) std::this_thread::sleep_for(std::chrono::microseconds(100));
    if (turns_ == before) pass(milliseconds(20));
    return frame;
  }

 private:
  using Clock = MoviePlayer::Clock;
  void pass(Clock::duration time) { ticks_ += time.count(); }
  Clock::time_point time() const { return Clock::time_point(Clock::duration(ticks_)); }
  Clock::time_point now() {
    if (std::this_thread::get_id() != owner_) pass(milliseconds(15));
    return time();
  }
  Clock::time_point turn() {
    const int before = looks_;
    ++turns_;
    while (looks_ == before && !over_) std::this_thread::sleep_for(std::chrono::microseconds(100));
    return time();
  }

  const std::thread::id owner_ = std::this_thread::get_id();
  std::atomic<Clock::rep> ticks_ = 1'000'000'000'000;
  std::atomic<int> turns_ = 0, looks_ = 0;
  std::atomic<bool> over_ = false;

 public:
  MoviePlayer player;
};

TEST(MoviePlayer, DropsFramesEvenlyWhenTheyComeLate) {
  const auto movie = openedMovie(proRes());
  std::vector<std::int64_t> shown;
  Belated belated;
  belated.player.setMovie(movie->copy());
  while (!belated.look()) {
  }
  belated.player.setRate(2);
  while (belated.player.rate() != 0) {
    const auto start = movie->frameSpanAt(belated.look()->time)->startMicros;
    if (shown.empty() || shown.back() != start) shown.push_back(start);
  }
  const auto statistics = belated.player.statistics();
  EXPECT_LT(statistics.shown, statistics.due);
  EXPECT_GE(2 * statistics.inTime, statistics.shown) << "what is shown is not stale";
  ASSERT_GT(shown.size(), 10U);
  for (std::size_t i = 1; i < shown.size(); ++i) EXPECT_GT(shown[i], shown[i - 1]);
  for (std::size_t i = 1; i < shown.size(); ++i) EXPECT_LT(shown[i] - shown[i - 1], 400000) << "it froze";
}

TEST(MoviePlayer, RestsWhileStill) {
  const auto movie = openedMovie(longGop());
  Played played;
  played.player.setMovie(movie->copy());
  ASSERT_NE(played.awaited(*movie), nullptr);
  played.player.setTime(at(24));
  ASSERT_NE(played.awaited(*movie), nullptr);
  std::this_thread::sleep_for(milliseconds(300));
  const std::clock_t before = std::clock();
  std::this_thread::sleep_for(milliseconds(500));
  EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 100);
}

}  // namespace
}  // namespace player
