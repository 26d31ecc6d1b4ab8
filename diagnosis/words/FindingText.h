#pragma once

#include <string>

#include "diagnosis/Finding.h"
#include "diagnosis/words/Words.h"

namespace diagnosis {

/// A finding in plain words: what was found, what speaks for it, and what to do. A sentence or two each; `why` may be
/// empty. Numbers are told only where they mean something.
struct FindingText {
  std::string verdict, why, advice;
};

FindingText textOf(const Finding& finding, const Language& language = {});

}  // namespace diagnosis
