#pragma once

#include <cstdint>
#include <string_view>

namespace diagnosis {

/// Short names of the ITU-T H.273 code points; "reserved" where the table has none.
std::string_view primariesName(std::uint16_t index);         ///< H.273 table 2
std::string_view transferFunctionName(std::uint16_t index);  ///< H.273 table 3
std::string_view matrixName(std::uint16_t index);            ///< H.273 table 4

}  // namespace diagnosis
