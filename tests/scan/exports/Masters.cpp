#include "tests/scan/exports/Masters.h"

#include "tests/diagnosis/exports/Paintings.h"
#include "tests/support/MovieFixture.h"

namespace scan::test {
namespace {

using diagnosis::test::paintedFile;
using diagnosis::test::Painting;

/// A part of a picture of 704 x 396, and how it moves over it.
struct Pan {
  int width = 0, height = 0;
  const char* x;
  const char* y;
};

/// t is the time within the shot, from 0 to 3.
constexpr Pan pans[] = {
    {640, 360, "64*t/3", "18"},   {416, 234, "20+260*t/3", "150-100*t/3"}, {560, 314, "144-144*t/3", "80*t/3"},
    {480, 270, "112", "126*t/3"}, {600, 338, "104*t/3", "58-58*t/3"},      {352, 198, "352-300*t/3", "60+30*t/3"},
};

std::string shotFilter(std::size_t shot, const Pan& pan) {
  const std::string number = std::to_string(shot);
  return "[" + number + ":v]crop=" + std::to_string(pan.width) + ":" + std::to_string(pan.height) + ":'" + pan.x +
         "':'" + pan.y + "',scale=640:360:flags=bicubic,setsar=1,noise=alls=2:allf=t[s" + number + "];";
}

/// Of three pictures as they are, and then shifted; each of the six is shown twice, the second time under another pan.
std::string masterOf(const std::string& name, const std::vector<Painting>& shifted) {
  std::vector<Painting> pictures;
  for (const Painting& each : shifted) pictures.push_back({each.name, each.painter});
  for (const Painting& each : shifted) pictures.push_back({each.name + "-later", each.painter, each.shift});
  std::vector<std::string> arguments;
  std::string filter, all;
  for (std::size_t shot = 0; shot < static_cast<std::size_t>(masterShots); ++shot) {
    for (const char* const each : {"-loop", "1", "-framerate", "24", "-t", "3", "-i"}) arguments.emplace_back(each);
    arguments.push_back(paintedFile(pictures[shot % pictures.size()]));
    filter += shotFilter(shot, pans[(shot + shot / pictures.size()) % std::size(pans)]);
    all += "[s" + std::to_string(shot) + "]";
  }
  filter +=
      all + "concat=n=" + std::to_string(masterShots) + ",scale=out_color_matrix=bt709:out_range=tv,format=yuv420p[v]";
  for (const char* const each :
       {"-map", "[v]", "-c:v", "libx264", "-preset", "veryfast", "-crf", "17", "-g", "48", "-colorspace", "bt709",
        "-color_primaries", "bt709", "-color_trc", "bt709", "-color_range", "tv"}) {
    arguments.emplace_back(each);
  }
  arguments.insert(arguments.end() - 18, {"-filter_complex", filter});
  return movie::test::fixtureMovie(name + ".mov", arguments);
}

}  // namespace

std::vector<Master> masters() {
  using namespace diagnosis::test;
  return {
      {"outdoors", Half::Fit,
       masterOf("scan-outdoors", {{"coast", coast, 3}, {"forest", forest, 0.55}, {"snow", snow, 1.1}})},
      {"indoors", Half::Fit,
       masterOf("scan-indoors", {{"portrait", portrait, -0.45}, {"fruit", fruit, 4}, {"street", street, 0.8}})},
      {"wide", Half::Report,
       masterOf("scan-wide", {{"mountains", mountains, 5}, {"desert", desert, 6}, {"rain", rain, 2.3}})},
      {"near", Half::Report,
       masterOf("scan-near", {{"kitchen", kitchen, 0.7}, {"flowers", flowers, 5}, {"stage", stage, 0.45}})},
  };
}

}  // namespace scan::test
