#include "tests/fuzz/MemoryFile.h"

#include <cstdio>
#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

namespace fuzz {

namespace {

/// No property of the program under test: the machine cannot do the test.
void require(bool done, const char* what) {
  if (done) return;
  std::perror(what);
  std::abort();
}

}  // namespace

MemoryFile::MemoryFile() : descriptor_(::memfd_create("movie", MFD_CLOEXEC)) {
  require(descriptor_ >= 0, "memfd_create");
  path_ = "/proc/self/fd/" + std::to_string(descriptor_);
}

MemoryFile::~MemoryFile() {
  ::close(descriptor_);
}

const std::string& MemoryFile::holding(movie::ByteView content) {
  require(::ftruncate(descriptor_, 0) == 0, "ftruncate");
  const ssize_t wrote = ::pwrite(descriptor_, content.data(), content.size(), 0);
  require(wrote == static_cast<ssize_t>(content.size()), "pwrite");
  return path_;
}

}  // namespace fuzz
