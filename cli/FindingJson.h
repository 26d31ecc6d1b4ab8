#pragma once

#include "cli/MovieJson.h"
#include "diagnosis/Finding.h"

namespace cli {

/// A finding as an object: causes with null where a number has no meaning.
JsonValue findingJson(const diagnosis::Finding& finding);

/// One of its causes.
JsonValue causeJson(const diagnosis::Cause& cause);

}  // namespace cli
