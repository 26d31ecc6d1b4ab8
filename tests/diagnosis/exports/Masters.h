#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/diagnosis/exports/Clips.h"

namespace diagnosis::test {

/// Makes movies when it is first called for; their path.
using MovieMaker = std::function<std::string()>;

/// Masters of pictures. Starting ffmpeg takes longer than encoding a frame: all of one picture are made in one run, so
/// whoever is to be made has to be asked for before any maker is called.
class Masters {
 public:
  MovieMaker asked(const Still& still, const Master& master);

 private:
  struct OfStill {
    Still still;
    std::vector<Master> masters;
  };
  static std::string made(const OfStill& all, const std::string& name);
  std::map<std::string, std::shared_ptr<OfStill>> stills_;
};

}  // namespace diagnosis::test
