#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/cli/PrintedJson.h"
#include "tests/cli/RunProgram.h"
#include "tests/support/MovieFixture.h"

namespace cli::test {

using movie::test::fixtureMovie;
using movie::test::fixtureMovies;

/// Twelve seconds of something that moves, with a cut in the middle.
inline std::string scanMaster() {
  return fixtureMovie(
      "scan-master.mp4",
      {"-f", "lavfi", "-i", "mandelbrot=s=320x180:r=24:start_scale=1:end_scale=0.02:end_pts=300", "-f", "lavfi", "-i",
       "mandelbrot=s=320x180:r=24:start_x=-1.2:start_y=0.2:start_scale=0.5:end_scale=0.01:end_pts=300",
       "-filter_complex", "[0:v]trim=duration=6[a];[1:v]trim=duration=6[b];[a][b]concat=n=2,format=yuv420p", "-c:v",
       "libx264", "-preset", "ultrafast", "-crf", "16", "-g", "24"});
}

inline std::string scanExport(const std::string& name, const std::string& filter,
                              const std::string& master = scanMaster()) {
  return fixtureMovies(master,
                       {{name + ".mp4", {"-vf", filter, "-c:v", "libx264", "-preset", "ultrafast", "-crf", "18"}}})
      .front();
}

inline std::string scanRemux() {
  return fixtureMovies(scanMaster(), {{"scan-remux.mov", {"-c", "copy"}}}).front();
}

/// Makes luma darker, by an exponent of 1.2.
constexpr const char* scanPower = "lutyuv=y='16.5+219*pow(clip((val-16)/219,0,1),1.2)'";
/// The same from the seventh second on.
constexpr const char* scanHalfPower = "lutyuv=y='16.5+219*pow(clip((val-16)/219,0,1),1.2)':enable='gte(t,6.98)'";

inline PrintedJson scanned(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"scan", "--json"});
  const ProgramRun run = runLumacheck(arguments);
  PrintedJson json = PrintedJson::parse(run.out);
  EXPECT_EQ(json["schema"], "lumacheck.scan/1");
  EXPECT_EQ(json["exitStatus"], run.status);
  return json;
}

}  // namespace cli::test
