// Plays two movies side by side in two players, pulling their frames as two views would, and tells how many were shown
// in time, how long the first pictures took, and what it cost.
//
// usage: bench_playback SECONDS WIDTHxHEIGHT MOVIE MOVIE

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>

#include <sys/resource.h>

#include "app/player/MoviePlayer.h"
#include "movie/decode/DecoderModule.h"

namespace {

using Clock = player::MoviePlayer::Clock;

/// What wakes the thread of the views.
class Bell {
 public:
  void ring() {
    {
      const std::lock_guard lock(mutex_);
      rung_ = true;
    }
    changed_.notify_one();
  }
  void waitUntil(Clock::time_point time) {
    std::unique_lock lock(mutex_);
    changed_.wait_until(lock, time, [this] { return rung_; });
    rung_ = false;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool rung_ = false;
};

double secondsSince(Clock::time_point begin) {
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

double processorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::unique_ptr<movie::Movie> opened(const char* path) {
  auto movie = movie::Movie::movieWithFile(path);
  if (!movie) {
    std::fprintf(stderr, "%s\n", movie.error().message().c_str());
    std::exit(2);
  }
  return std::move(*movie);
}

void print(const char* name, const player::PlayingStatistics& statistics) {
  const double share =
      statistics.due == 0 ? 0 : 100.0 * static_cast<double>(statistics.inTime) / static_cast<double>(statistics.due);
  std::printf("  %-40s due %4llu  shown %4llu  in time %4llu  %5.1f %%\n", name,
              static_cast<unsigned long long>(statistics.due), static_cast<unsigned long long>(statistics.shown),
              static_cast<unsigned long long>(statistics.inTime), share);
}

}  // namespace

int main(int argc, char** argv) {
  int width = 0, height = 0;
  if (argc != 5 || std::sscanf(argv[2], "%dx%d", &width, &height) != 2) {
    std::fprintf(stderr, "usage: bench_playback SECONDS WIDTHxHEIGHT MOVIE MOVIE\n");
    return 2;
  }
  const double seconds = std::atof(argv[1]);
  Bell bell;
  const player::MoviePlayer::Environment environment{.frameArrived = [&] { bell.ring(); }};
  std::array<player::MoviePlayer, 2> players{player::MoviePlayer(environment), player::MoviePlayer(environment)};

  movie::preloadDecoder();  // as the program does when it starts
  (void)movie::decoderBackend();
  const auto dropped = Clock::now();
  for (std::size_t i = 0; i < 2; ++i) {
    players[i].setPictureSize(width, height);
    players[i].setMovie(opened(argv[3 + i]));
  }
  while (!players[0].frame() || !players[1].frame()) bell.waitUntil(Clock::now() + std::chrono::seconds(10));
  std::printf("  first pictures of both after %.3f s\n", secondsSince(dropped));

  const auto began = Clock::now();
  const double costBefore = processorSeconds();
  for (auto& player : players) player.setRate(1);
  while (secondsSince(began) < seconds && (players[0].rate() != 0 || players[1].rate() != 0)) {
    bell.waitUntil(std::min(players[0].nextChange(), players[1].nextChange()));
    for (auto& player : players) player.frame();
  }
  const double played = secondsSince(began);
  const double cost = processorSeconds() - costBefore;
  for (std::size_t i = 0; i < 2; ++i) print(argv[3 + i], players[i].statistics());
  std::printf("  %.1f s played, %.0f %% of one processor\n", played, 100 * cost / played);
  for (auto& player : players) player.setRate(0);

  const double stillBefore = processorSeconds();
  bell.waitUntil(Clock::now() + std::chrono::seconds(1));
  bell.waitUntil(Clock::now() + std::chrono::seconds(1));
  const double restBefore = processorSeconds();
  bell.waitUntil(Clock::now() + std::chrono::seconds(1));
  std::printf("  standing still: %.2f ms of processor time in a second (%.1f before)\n",
              1000 * (processorSeconds() - restBefore), 1000 * (restBefore - stillBefore));
  return 0;
}
