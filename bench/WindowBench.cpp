// The window at work, offscreen.
//
//   bench_window SOURCE DEST SECONDS
//
// Prints how long both first pictures take after a drop, the share of frames shown in time while both movies play side
// by side, each by itself and then linked, what that costs, and how long a check takes from the button.

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>

#include <sys/resource.h>
#include <unistd.h>

#include "SharedFiles/foundation/BundleInfo.h"
#include "SharedFiles/foundation/MainThread.h"
#include "SharedFiles/settings/UserDefaults.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "tools/screenshots/EmptyHome.h"

namespace {

bool runUntil(const std::function<bool()>& condition, int milliseconds) {
  QElapsedTimer timer;
  timer.start();
  constexpr int turn = 2;  // ms
  while (!condition() && timer.elapsed() < milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(turn, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
  }
  return condition();
}

double processorSeconds() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

class WindowBench {
 public:
  WindowBench(QString source, QString dest, int seconds)
      : source_(std::move(source)), dest_(std::move(dest)), milliseconds_(1000 * seconds) {}

  void run() {
    controller_.awakeFromNib();
    interface_.window().show();
    controller_.applicationDidFinishLaunching();
    for (int i = 0; i < 20; ++i) QApplication::processEvents();
    drop();
    playBoth();
    playLinked();
    check();
  }

 private:
  QVMovieView& sourceView() { return *interface_.source.movieView; }
  QVMovieView& destView() { return *interface_.dest.movieView; }

  void drop() {
    QElapsedTimer timer;
    timer.start();
    emit sourceView().filesDropped(&sourceView(), {source_});
    emit destView().filesDropped(&destView(), {dest_});
    runUntil([&] { return !sourceView().picture().isNull() && !destView().picture().isNull(); }, 10000);
    std::printf("drop to both first pictures            %6.0f ms   goal 300\n",
                static_cast<double>(timer.nsecsElapsed()) / 1e6);
  }

  static void print(const char* what, const player::PlayingStatistics& played) {
    const double share =
        played.due > 0 ? 100.0 * static_cast<double>(played.inTime) / static_cast<double>(played.due) : 0;
    std::printf("%s %5.1f %% of %llu frames shown within one frame of when they were due   goal 95\n", what, share,
                static_cast<unsigned long long>(played.due));
  }

  void playBoth() {
    interface_.linkBtn->setChecked(false);
    for (QVMovieView* view : {&sourceView(), &destView()}) view->play(1);
    const double playing = costOf(milliseconds_);
    print("side by side, source     ", sourceView().statistics());
    print("side by side, destination", destView().statistics());
    for (QVMovieView* view : {&sourceView(), &destView()}) view->play(0);
    costOf(2000);  // what was in work ends
    std::printf("of one processor, side by side         %6.0f %%, standing still %.2f %%\n", playing, costOf(1000));
  }

  /// The share of one processor that the program takes meanwhile, in percent.
  static double costOf(int milliseconds) {
    const double before = processorSeconds();
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
    return 100 * (processorSeconds() - before) / (0.001 * milliseconds);
  }

  void playLinked() {
    for (QVMovieView* view : {&sourceView(), &destView()}) view->gotoBeginning();
    interface_.linkBtn->setChecked(true);
    unsigned leader = 0, follower = 0;
    QObject counted;
    QObject::connect(&sourceView(), &QVMovieView::pictureDidChange, &counted, [&] { ++leader; });
    QObject::connect(&destView(), &QVMovieView::pictureDidChange, &counted, [&] { ++follower; });
    sourceView().play(1);
    runUntil([] { return false; }, milliseconds_);
    print("linked, leader           ", sourceView().statistics());
    sourceView().play(0);
    std::printf("linked, follower          %u pictures for the leader's %u\n", follower, leader);
  }

  void check() {
    std::array<double, 9> milliseconds{};
    for (double& each : milliseconds) {
      QElapsedTimer timer;
      timer.start();
      controller_.checkAction();
      each = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    }
    std::sort(milliseconds.begin(), milliseconds.end());
    std::printf("check from the button                  %6.1f ms\n", milliseconds[milliseconds.size() / 2]);
  }

  QString source_, dest_;
  int milliseconds_;
  LinuxPathPlatform platform_{::getuid(), BundleInfo::mainBundle()};
  UserDefaults defaults_{platform_, BundleInfo::mainBundle()};
  MainInterface interface_;
  LumacheckAppDelegate controller_{interface_, defaults_};
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: bench_window SOURCE DEST SECONDS\n", stderr);
    return 2;
  }
  const EmptyHome home;
  QApplication application(argc, argv);
  const MainThread mainThread;
  WindowBench(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]), QByteArray(argv[3]).toInt()).run();
  return 0;
}
