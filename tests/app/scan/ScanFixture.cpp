#include "tests/app/scan/ScanFixture.h"

#include <QPushButton>
#include <QTest>
#include <string>
#include <vector>

#include "tests/support/MovieFixture.h"

namespace {

const std::vector<std::string> encoded{"-c:v", "libx264", "-preset", "ultrafast", "-crf", "18"};

constexpr const char* still = "mandelbrot=s=320x180:r=24:start_scale=0.3:end_scale=0.2";

std::string reel() {
  return movie::test::fixtureMovie(
      "scan-master.mp4",
      {"-f", "lavfi", "-i", "mandelbrot=s=320x180:r=24:start_scale=1:end_scale=0.02:end_pts=300", "-f", "lavfi", "-i",
       "mandelbrot=s=320x180:r=24:start_x=-1.2:start_y=0.2:start_scale=0.5:end_scale=0.01:end_pts=300",
       "-filter_complex", "[0:v]trim=duration=6[a];[1:v]trim=duration=6[b];[a][b]concat=n=2,format=yuv420p", "-c:v",
       "libx264", "-preset", "ultrafast", "-crf", "16", "-g", "24"});
}

QString exported(const std::string& name, std::vector<std::string> arguments) {
  arguments.insert(arguments.end(), encoded.begin(), encoded.end());
  return QString::fromStdString(movie::test::fixtureMovies(reel(), {{name, arguments}}).front());
}

}  // namespace

QString reelMovie() {
  return QString::fromStdString(reel());
}

QString darkerFromMovie() {
  return exported("scan-darker-from.mp4",
                  {"-vf", "lutyuv=y='16.5+219*pow(clip((val-16)/219,0,1),1.2)':enable='gte(t,6.98)'"});
}

QString leaderMovie() {
  return exported("scan-leader.mp4", {"-filter_complex",
                                      "testsrc2=s=320x180:r=24:d=2,format=yuv420p,setsar=1[l];[0:v]setsar=1[r];"
                                      "[l][r]concat=n=2"});
}

QString indexFirstMovie() {
  return QString::fromStdString(
      movie::test::fixtureMovies(reel(), {{"scan-index-first.mov", {"-c", "copy", "-movflags", "+faststart"}}})
          .front());
}

QString longReelMovie() {
  return QString::fromStdString(
      movie::test::fixtureMovie("scan-long.mov", {"-stream_loop", "40", "-i", reel(), "-c", "copy"}));
}

QString stillMovie() {
  return QString::fromStdString(movie::test::fixtureMovie(
      "scan-still.mp4", {"-f", "lavfi", "-i", still, "-vf", "trim=end_frame=1,loop=143:1,setpts=N/24/TB,format=yuv420p",
                         "-r", "24", "-c:v", "libx264", "-crf", "16"}));
}

QString twoStillsMovie() {
  return QString::fromStdString(movie::test::fixtureMovie(
      "scan-two-stills.mp4",
      {"-f", "lavfi", "-i", "smptehdbars=s=320x180:r=24", "-f", "lavfi", "-i", still, "-filter_complex",
       "[0:v]trim=end_frame=72,setsar=1,format=yuv420p[a];"
       "[1:v]trim=end_frame=1,loop=71:1,setpts=N/24/TB,setsar=1,format=yuv420p[b];[a][b]concat=n=2",
       "-r", "24", "-c:v", "libx264", "-crf", "16"}));
}

void ScanFixture::begin(const QString& source, const QString& dest) {
  load(source, dest);
  QTest::mouseClick(interface().scanBtn, Qt::LeftButton);
}

void ScanFixture::scan(const QString& source, const QString& dest) {
  begin(source, dest);
  ASSERT_TRUE(isScanning());
  for (int i = 0; i < 6 && isScanning(); ++i) waitUntil([this] { return !isScanning(); });  // sanitizers are slow
  ASSERT_FALSE(isScanning());
}

void ScanFixture::waitForFrames() {
  ASSERT_TRUE(waitUntil([this] { return timeline().timeline().done > 0; }));
}

void ScanFixture::clickAt(double seconds) {
  runFor(1);  // it may have come up only now
  QTest::mouseClick(&timeline(), Qt::LeftButton, Qt::NoModifier,
                    QPoint(qRound(timeline().xOf(seconds)), timeline().height() - 10));
}
