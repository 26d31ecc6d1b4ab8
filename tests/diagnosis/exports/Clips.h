#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/diagnosis/exports/Recipe.h"

namespace diagnosis::test {

/// Thresholds are set on the exports of one half of the clips, and what they give is reported on those of the other. No
/// content is in both.
enum class Half { Fit, Report };

/// A picture that masters are made of.
struct Still {
  std::string name;
  std::function<std::string()> path;  ///< made when it is first asked for
};

struct Clip {
  std::string name;
  Half half = Half::Fit;
  bool colorful = true, allTones = true;
  Still still;
  Still later;  ///< another moment of it: other things in the same place and light
};

/// Painted ones; with LUMACHECK_EXPORTS_PHOTOS=FOLDER its PNG pictures of at least 640 x 360 instead, in turns.
std::vector<Clip> clips();

/// A movie that exists already, of other writers.
struct ExistingMovie {
  Half half = Half::Fit;
  std::string path;
  Master master;  ///< what its samples are
  Region shown;   ///< the part of them that is meant to be seen; exports show all
};

/// Those of realMovies() whose samples are known here. All but a ramp are one and the same test picture.
std::vector<ExistingMovie> existingMovies();

}  // namespace diagnosis::test
