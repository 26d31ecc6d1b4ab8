#include "SharedFiles/crash/handler/RawReport.h"

#include <array>
#include <bit>
#include <cerrno>
#include <filesystem>

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <ucontext.h>
#include <unistd.h>

#include "SharedFiles/crash/handler/CrashFacts.h"

namespace crash {
namespace {

constexpr int mostFramesTold = 128;

std::uint64_t programCounter(std::uint64_t context) {
  if (context == 0) return 0;
  const auto* const registers = std::bit_cast<const ucontext_t*>(context);
#if defined(__x86_64__)
  return static_cast<std::uint64_t>(registers->uc_mcontext.gregs[REG_RIP]);
#elif defined(__aarch64__)
  return registers->uc_mcontext.pc;
#else
  return registers == nullptr ? 1 : 0;
#endif
}

}  // namespace

void RawReport::prepare(const CrashHandlerSettings& settings) {
  settings_ = settings;
  host_ = hostName();
  std::error_code error;
  program_ = std::filesystem::read_symlink("/proc/self/exe", error).string();
  std::array<void*, 2> frames{};
  ::backtrace(frames.data(), static_cast<int>(frames.size()));
}

void RawReport::begin(const CrashRequest& request) {
  file_ = makeFile(request.second);
  if (file_ < 0) return;
  writeHead(request);
  const std::uint64_t crashed = programCounter(request.context);
  writeFrame(0, crashed);
  flush();

  std::array<void*, mostFramesTold> frames{};
  const int count = ::backtrace(frames.data(), mostFramesTold);
  // The first ones are this handler's; where it was called from, the crashed function stands with its own address.
  int first = 0;
  while (first < count && reinterpret_cast<std::uint64_t>(frames[static_cast<std::size_t>(first)]) != crashed) ++first;
  const bool found = first < count;
  if (!found) first = -1;
  for (int i = first + 1; i < count; ++i) {
    writeFrame(i - first, reinterpret_cast<std::uint64_t>(frames[static_cast<std::size_t>(i)]));
    flush();
  }
}

void RawReport::finish() {
  if (file_ < 0) return;
  text_.clear();
  writeMappings();
  ::fsync(file_);
}

int RawReport::makeFile(std::time_t second) {
  for (int attempt = 1; attempt <= nameAttempts; ++attempt) {
    text_.clear();
    text_.add(settings_.reportFolder.c_str()).add('/');
    addReportName(text_, settings_.application.c_str(), second, host_.c_str(), attempt);
    const int file = ::open(text_.text(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    text_.clear();
    if (file >= 0 || errno != EEXIST) return file;
  }
  return -1;
}

void RawReport::writeHead(const CrashRequest& request) {
  text_.add("Process:         ").add(settings_.application.c_str()).add(" [");
  text_.addNumber(static_cast<std::uint64_t>(request.process))
      .add("]\nVersion:         ")
      .add(settings_.version.c_str());
  text_.add("\nDate:            ");
  addDate(text_, request.second);
  text_.add("\nSignal:          ");
  addSignal(text_, request.signal);
  if (request.exception[0] != '\0') text_.add("\nException:       ").add(request.exception.data());
  text_.add("\nCrashed Thread:  ").addNumber(static_cast<std::uint64_t>(request.thread));
  text_.add("\nNote:            written by the process itself; the other threads are not known\n\nThread ");
  text_.addNumber(static_cast<std::uint64_t>(request.thread)).add(" Crashed:\n");
  flush();
}

void RawReport::writeFrame(int number, std::uint64_t address) {
  text_.addNumber(static_cast<std::uint64_t>(number)).add("  ").addAddress(address);
  flush();  // what follows reads the loader's memory, which may be damaged
  dl_find_object module{};
  if (::_dl_find_object(std::bit_cast<void*>(address), &module) == 0) {
    // The program itself has no name there.
    const char* const name = module.dlfo_link_map->l_name;
    const auto start = std::bit_cast<std::uint64_t>(module.dlfo_map_start);
    text_.add("  ").add(*name != '\0' ? name : program_.c_str()).add(" + ").addAddress(address - start);
  }
  text_.add('\n');
}

void RawReport::writeMappings() {
  text_.add("\nMappings:\n");
  flush();
  std::array<char, 4096> block{};
  const int mappings = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  for (ssize_t count = 1; mappings >= 0 && count > 0;) {
    count = ::read(mappings, block.data(), block.size());
    if (count > 0) write(block.data(), static_cast<std::size_t>(count));
  }
  if (mappings >= 0) ::close(mappings);
}

void RawReport::flush() {
  write(text_.text(), text_.size());
  text_.clear();
}

void RawReport::write(const char* bytes, std::size_t size) const {
  while (size > 0) {
    const ssize_t count = ::write(file_, bytes, size);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
}

}  // namespace crash
