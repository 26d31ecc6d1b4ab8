#include <cstdio>

#include "tests/diagnosis/exports/Recipe.h"

namespace diagnosis::test {
namespace {

Recipe placed(Recipe recipe, const Placement& placement) {
  recipe.placement = placement;
  return recipe;
}

Recipe coveredBy(Recipe recipe, double share) {
  recipe.covered = share;
  return recipe;
}

Placement partOfSource(const Region& region) {
  Placement placement;
  placement.source = region;
  return placement;
}

Placement partOfDest(const Region& region) {
  Placement placement;
  placement.dest = region;
  return placement;
}

Placement mirrored(bool across, bool down) {
  Placement placement;
  placement.mirroredX = across;
  placement.mirroredY = down;
  return placement;
}

/// What was wider than the picture, in bars: both show the same part.
Placement widerInBars(double top) {
  Placement placement;
  placement.source = placement.dest = {0, top, 1, 1 - top};
  return placement;
}

/// Lines of letters: white blocks with dark rims.
std::string subtitle() {
  std::string filters;
  for (int letter = 0; letter < 22; ++letter) {
    const int width = 6 + letter * 7 % 5, left = 130 + 17 * letter, height = letter % 3 == 0 ? 20 : 14;
    if (letter % 6 == 5) continue;
    char boxes[200];
    std::snprintf(boxes, sizeof boxes, "drawbox=%d:%d:%d:%d:black@0.8:fill,drawbox=%d:%d:%d:%d:white:fill,", left - 2,
                  328 - height, width + 4, height + 4, left, 330 - height, width, height);
    filters += boxes;
  }
  filters.pop_back();
  return filters;
}

std::vector<Recipe> resized() {
  const Master master = proResMaster();
  const auto right = [&](const char* name, const char* filter, int crf = 20) {
    return rightExport(name, master, x264(crf), video709, filter);
  };
  return {
      right("small", "scale=426:240:flags=bicubic"),
      right("smaller", "scale=320:180:flags=lanczos", 23),
      right("bilinear", "scale=480:270:flags=bilinear"),
      right("squeezed", "scale=480:360:flags=bicubic"),
      right("larger", "scale=854:480:flags=bicubic", 24),
      rightExport("small", pngMaster(), x264(20), video709, "scale=480:270:flags=bicubic"),
      rightExport("small", fullRangeMaster(), x264(22), full709, "scale=in_range=pc:out_range=pc:w=426:h=240"),
  };
}

std::vector<Recipe> cutAndBarred() {
  const Master master = proResMaster();
  const auto right = [&](const char* name, const char* filter, const Placement& placement, int crf = 20) {
    return placed(rightExport(name, master, x264(crf), video709, filter), placement);
  };
  return {
      right("letterbox", "pad=640:480:0:60:black", partOfDest({0, 0.125, 1, 0.875})),
      right("letterbox-28", "pad=640:426:0:33:black", partOfDest({0, 33.0 / 426, 1, 393.0 / 426}), 28),
      right("scope", "drawbox=0:0:640:46:black:fill,drawbox=0:314:640:46:black:fill", widerInBars(46.0 / 360)),
      right("pillarbox", "pad=860:360:110:0:black", partOfDest({110.0 / 860, 0, 750.0 / 860, 1})),
      right("postage", "scale=480:270,pad=640:360:80:44:black", partOfDest({0.125, 44.0 / 360, 0.875, 314.0 / 360})),
      right("crop-43", "crop=480:360", partOfSource({0.125, 0, 0.875, 1})),
      right("crop-scope", "crop=640:268:0:46", partOfSource({0, 46.0 / 360, 1, 314.0 / 360})),
      right("zoom-110", "crop=580:326:30:16,scale=640:360",
            partOfSource({30.0 / 640, 16.0 / 360, 610.0 / 640, 342.0 / 360})),
      right("zoom-104", "crop=616:346:12:6,scale=640:360",
            partOfSource({12.0 / 640, 6.0 / 360, 628.0 / 640, 352.0 / 360})),
      right("mirrored", "hflip", mirrored(true, false)),
      right("upside-down", "hflip,vflip", mirrored(true, true)),
      right("mirrored-28", "hflip", mirrored(true, false), 28),
      placed(rightExport("letterbox", pngMaster(), x264(22), video709, "pad=640:480:0:60:black"),
             partOfDest({0, 0.125, 1, 0.875})),
  };
}

std::vector<Recipe> touched() {
  const Master master = proResMaster();
  const auto right = [&](const char* name, const std::string& filter, int crf = 20) {
    return rightExport(name, master, x264(crf), video709, filter);
  };
  return {
      coveredBy(right("subtitle", subtitle()), 0.12),
      coveredBy(right("subtitle-30", subtitle(), 30), 0.12),
      coveredBy(right("logo", "drawbox=540:24:72:36:white@0.6:fill,drawbox=552:34:48:16:red@0.7:fill"), 0.04),
      coveredBy(right("timecode", "drawbox=220:300:200:36:black:fill,drawbox=240:308:20:20:white:fill"), 0.08),
      right("noise-4", "noise=alls=4:allf=t"),
      right("noise-8", "noise=alls=8:allf=t", 18),
      right("denoised", "hqdn3d=3:2:4:3"),
      right("sharpened", "unsharp=5:5:0.5"),
      right("softened", "gblur=sigma=0.8"),
      right("deinterlaced", "bwdif=mode=send_frame:deint=all"),
  };
}

}  // namespace

std::vector<Recipe> placedRecipes() {
  std::vector<Recipe> all;
  for (const auto& part : {resized(), cutAndBarred(), touched()}) all.insert(all.end(), part.begin(), part.end());
  return all;
}

}  // namespace diagnosis::test
