#include <cerrno>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include "system/Descriptor.h"
#include "system/FileAttributes.h"
#include "tests/support/FaultyCalls.h"
#include "tests/support/TemporaryFolder.h"

namespace sys {
namespace {

using movie::test::TemporaryFolder;
using test::FaultyCalls;

constexpr auto accessList = "system.posix_acl_access";

/// As the kernel takes it: user::rw-, user:1234:r--, a group, mask::r--, others.
std::string listOf(char group, char others) {
  std::string list{
      "\2\0\0\0"
      "\1\0\6\0\xFF\xFF\xFF\xFF"
      "\2\0\4\0\xD2\4\0\0"
      "\4\0\0\0\xFF\xFF\xFF\xFF"
      "\x10\0\4\0\xFF\xFF\xFF\xFF"
      "\x20\0\0\0\xFF\xFF\xFF\xFF",
      44};
  list[22] = group;
  list[38] = others;
  return list;
}

/// What a file becomes that takes the place of an older one, whose group it may not have.
class FileInOtherGroup : public testing::Test {
 protected:
  Descriptor open(const char* name) const {
    return Descriptor(::open(folder_.path(name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  }
  struct stat inherit() {
    struct stat status {};
    EXPECT_EQ(::fstat(old_.get(), &status), 0);
    ++status.st_gid;
    FaultyCalls calls([](FaultyCalls::Call call, std::size_t) {
      return FaultyCalls::Fault{call == FaultyCalls::Call::Owner ? EPERM : 0, false};
    });
    EXPECT_TRUE(inheritAttributes({old_.get(), "old"}, {heir_.get(), "heir"}, status, Heir::Replacement, calls));
    EXPECT_EQ(::fstat(heir_.get(), &status), 0);
    return status;
  }

  const TemporaryFolder folder_;
  const Descriptor old_ = open("old"), heir_ = open("heir");
};

TEST_F(FileInOtherGroup, GivesThatGroupWhatAllOthersMay) {
  ASSERT_EQ(::fchmod(old_.get(), 0764), 0);
  EXPECT_EQ(inherit().st_mode & 07777U, 0744U);
}

TEST_F(FileInOtherGroup, GivesItThatInTheAccessListAndLeavesNamedUsersTheirs) {
  for (const auto& [group, others] : {std::pair{'\6', '\0'}, std::pair{'\6', '\4'}, std::pair{'\0', '\4'}}) {
    const std::string list = listOf(group, others);
    if (::fsetxattr(old_.get(), accessList, list.data(), list.size(), 0) != 0) GTEST_SKIP() << "no access lists here";
    EXPECT_EQ(inherit().st_mode & 0070U, 0040U) << "the mask";
    std::string made(100, '\0');
    const ssize_t size = ::fgetxattr(heir_.get(), accessList, made.data(), made.size());
    ASSERT_GT(size, 0);
    made.resize(static_cast<std::size_t>(size));
    EXPECT_EQ(made, listOf(others, others));
  }
}

}  // namespace
}  // namespace sys
