#include "tests/diagnosis/exports/Clips.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "tests/diagnosis/exports/Paintings.h"
#include "tests/support/MovieFixture.h"

namespace diagnosis::test {
namespace {

Clip painted(const std::string& name, Half half, Painter painter, double shift, bool colorful = true,
             bool allTones = true) {
  const auto still = [](const Painting& painting) {
    return Still{painting.name, [=] { return paintedFile(painting); }};
  };
  return {name, half, colorful, allTones, still({name, painter}), still({name + "-later", painter, shift})};
}

std::vector<Clip> paintedClips() {
  return {
      painted("coast", Half::Fit, coast, 3),
      painted("forest", Half::Fit, forest, 0.55, true, false),
      painted("snow", Half::Fit, snow, 1.1, false, false),
      painted("portrait", Half::Fit, portrait, -0.45),
      painted("fruit", Half::Fit, fruit, 4),
      painted("street", Half::Fit, street, 0.8, true, false),
      painted("mountains", Half::Report, mountains, 5),
      painted("desert", Half::Report, desert, 6),
      painted("rain", Half::Report, rain, 2.3, false, false),
      painted("kitchen", Half::Report, kitchen, 0.7),
      painted("flowers", Half::Report, flowers, 5),
      painted("stage", Half::Report, stage, 0.45, true, false),
  };
}

std::vector<Clip> photographs(const std::string& folder) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".png") paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  std::vector<Clip> all;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const auto still = [](const std::filesystem::path& path) {
      return Still{path.stem().string(), [=] { return path.string(); }};
    };
    all.push_back({paths[i].stem().string(), i % 2 == 0 ? Half::Fit : Half::Report, true, true, still(paths[i]),
                   still(paths[(i + 2) % paths.size()])});
  }
  return all;
}

}  // namespace

std::vector<Clip> clips() {
  const char* const folder = std::getenv("LUMACHECK_EXPORTS_PHOTOS");
  return folder == nullptr ? paintedClips() : photographs(folder);
}

std::vector<ExistingMovie> existingMovies() {
  struct Known {
    const char* file;
    Half half;
    Master master;
    Region shown = {};
  };
  const Region apertureHd{0.0125, 0.0125, 0.9875, 0.9875}, aperturePal{0.0119, 0, 0.9881, 1};
  const Known known[] = {
      {"AcademySoftw_greyscale-gamma195.mov", Half::Fit, {"ramp", {"", "yuvj420p", {}}, full709}},
      {"openpreserve_animation.mov", Half::Report, {"animation", {"", "argb", {}}, rgbColors}},
      {"openpreserve_apple-intermediate-codec.mov", Half::Report, {"intermediate", {"", "yuv420p", {}}, video601}},
      {"openpreserve_apple-prores-422.mov", Half::Report, {"prores422", {"", "yuv422p10le", {}}, video601}},
      {"openpreserve_dv-pal-interlaced.mov", Half::Report, {"dv", {"", "yuv420p", {}}, video601}, aperturePal},
      {"openpreserve_hdv-720p60.mov", Half::Report, {"hdv", {"", "yuv420p", {}}, video709}, apertureHd},
      {"openpreserve_jpeg2000.mov", Half::Report, {"jpeg2000", {"", "rgba", {}}, rgbColors}},
      {"openpreserve_photo-jpeg.mov", Half::Report, {"photojpeg", {"", "yuvj420p", {}}, full601}},
      {"openpreserve_xdcam-ex-720p30.mov", Half::Report, {"xdcam", {"", "yuv420p", {}}, video709}, apertureHd},
  };
  std::vector<ExistingMovie> movies;
  for (const std::string& path : movie::test::realMovies()) {
    for (const Known& each : known) {
      if (std::filesystem::path(path).filename() != each.file) continue;
      movies.push_back({each.half, path, each.master, each.shown});
    }
  }
  return movies;
}

}  // namespace diagnosis::test
