#pragma once

#include <functional>
#include <string>

#include "diagnosis/Finding.h"

namespace diagnosis {

/// How somebody reads it. English where it is left empty.
struct Language {
  std::function<std::string(const char* english)> sentence;  ///< places such as %1 left as they are
  std::function<std::string(double value, int decimals)> number;
};

/// A finding in plain words: what was found, what speaks for it, and what to do. A sentence or two each; `why` may be
/// empty. Numbers are told only where they mean something.
struct FindingText {
  std::string verdict, why, advice;
};

FindingText textOf(const Finding& finding, const Language& language = {});

}  // namespace diagnosis
