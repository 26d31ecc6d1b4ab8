#pragma once

#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

/// While it lives, root is an ordinary user to whom files can be forbidden; the folder is given to him.
class OrdinaryUser {
 public:
  explicit OrdinaryUser(const std::string& folder) : root_(::geteuid() == 0) {
    constexpr uid_t nobody = 65534;
    if (!root_) return;
    EXPECT_EQ(::chown(folder.c_str(), nobody, nobody), 0);
    EXPECT_EQ(::setegid(nobody) | ::seteuid(nobody), 0);
  }
  ~OrdinaryUser() { EXPECT_TRUE(!root_ || (::seteuid(0) == 0 && ::setegid(0) == 0)); }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  bool root_;
};
