#pragma once

#include <string>
#include <string_view>

namespace movie {

/// UTF-16 as UTF-8. A surrogate without its partner becomes U+FFFD.
std::string utf8Of(std::u16string_view units);

}  // namespace movie
