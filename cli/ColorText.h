#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "movie/atoms/ImageDescription.h"

namespace cli {

/// Short names of the ITU-T H.273 code points; "reserved" where the table has none.
std::string_view primariesName(std::uint16_t index);         ///< H.273 table 2
std::string_view transferFunctionName(std::uint16_t index);  ///< H.273 table 3
std::string_view matrixName(std::uint16_t index);            ///< H.273 table 4

/// At most so many decimals, none that are not needed.
std::string shortNumber(double value, int decimals = 3);

// A colour property as one line for a terminal; "none" for one that is absent.
std::string gammaText(const std::optional<std::int32_t>& fixed);
std::string colorText(const std::optional<movie::NclcParameters>& color);
std::string profileText(const std::optional<movie::Bytes>& profile);

}  // namespace cli
