#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "movie/atoms/ImageDescription.h"

namespace cli {

/// At most so many decimals, none that are not needed.
std::string shortNumber(double value, int decimals = 3);

// A colour property as one line for a terminal; "none" for one that is absent.
std::string gammaText(const std::optional<std::int32_t>& fixed);
std::string colorText(const std::optional<movie::NclcParameters>& color);
std::string profileText(const std::optional<movie::Bytes>& profile);

}  // namespace cli
