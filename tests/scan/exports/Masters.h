#pragma once

#include <string>
#include <vector>

namespace scan::test {

constexpr double masterRate = 24, shotSeconds = 3;
constexpr int masterShots = 12, masterWidth = 640, masterHeight = 360;
constexpr double masterSeconds = shotSeconds * masterShots;

/// Thresholds are set on one half, and what they give is reported on the other: no picture is in both.
enum class Half { Fit, Report };

/// A movie that is exported: shots of painted pictures, each panned over in its own way, some slowly, some fast.
struct Master {
  std::string name;
  Half half = Half::Fit;
  std::string path;
};

/// Two of each half, made where they are not there.
std::vector<Master> masters();

}  // namespace scan::test
