#include "tests/support/SmallDisk.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"

namespace movie::test {

namespace {

constexpr int passed = 0, failed = 1, noDisk = 2;

bool wrote(const char* path, const std::string& text) {
  std::ofstream stream(path);
  stream << text;
  stream.close();
  return static_cast<bool>(stream);
}

/// Mounts that only this process sees: of a user name space of its own, or as the administrator.
bool hasOwnMounts() {
  const std::string user = std::to_string(::geteuid()), group = std::to_string(::getegid());
  if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) {
    return wrote("/proc/self/setgroups", "deny") && wrote("/proc/self/uid_map", user + " " + user + " 1") &&
           wrote("/proc/self/gid_map", group + " " + group + " 1");
  }
  return ::unshare(CLONE_NEWNS) == 0;
}

bool mountedDisk(const std::string& folder) {
  return hasOwnMounts() && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("lumacheck", folder.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, "size=1m,mode=0777") == 0;
}

/// What the process of the work ends with. The folder is emptied of what the work made, not of anything else.
int ranOn(const std::string& folder, const std::function<void(const std::string&)>& work) {
  try {
    ::setenv("TMPDIR", folder.c_str(), 1);
    const TemporaryFolder own;
    work(own.path(""));
  } catch (const std::exception& error) {
    ADD_FAILURE() << error.what();
  }
  std::fflush(stdout);
  return testing::Test::HasFailure() ? failed : passed;
}

int inProcess(const std::function<int()>& work) {
  std::fflush(stdout);
  const pid_t child = ::fork();
  if (child == 0) ::_exit(work());
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : failed;
}

}  // namespace

void onSmallDisk(const std::string& what, const std::function<void(const std::string&)>& work) {
  const TemporaryFolder place;
  int result = inProcess([&] { return mountedDisk(place.path("")) ? ranOn(place.path(""), work) : noDisk; });
  const char* const given = std::getenv("LUMACHECK_SMALL_DISK");
  if (result == noDisk && given) result = inProcess([&] { return ranOn(given, work); });
  EXPECT_NE(result, noDisk) << "A small disk is needed: let users make user name spaces (user.max_user_namespaces), or "
                               "mount a tmpfs of 1 MB that this user may write in and name it in LUMACHECK_SMALL_DISK.";
  EXPECT_NE(result, failed) << what;
}

void fillDisk(const std::string& path) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  const std::vector<char> bytes(4096, 'x');
  while (::write(file, bytes.data(), bytes.size()) > 0) {
  }
  EXPECT_EQ(errno, ENOSPC) << std::strerror(errno);
  ::close(file);
}

}  // namespace movie::test
