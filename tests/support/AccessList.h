#pragma once

#include <string>

namespace movie::test {

/// The attribute that an access list is kept in.
constexpr const char* accessListName = "system.posix_acl_access";

/// user::rw-, user:1234:r--, group::r--, mask::r--, other::---, as the kernel takes it.
inline std::string someAccessList() {
  return {
      "\2\0\0\0"
      "\1\0\6\0\xFF\xFF\xFF\xFF"
      "\2\0\4\0\xD2\4\0\0"
      "\4\0\4\0\xFF\xFF\xFF\xFF"
      "\x10\0\4\0\xFF\xFF\xFF\xFF"
      "\x20\0\0\0\xFF\xFF\xFF\xFF",
      44};
}

}  // namespace movie::test
