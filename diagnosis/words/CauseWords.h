#pragma once

#include <string>
#include <vector>

#include "diagnosis/Finding.h"
#include "diagnosis/words/Words.h"

namespace diagnosis {

/// The short names of what differs, for a table or a label: "gamma shift, exponent 1.20; range compressed".
std::string causeWords(const std::vector<Cause>& causes, const Language& language = {});

}  // namespace diagnosis
