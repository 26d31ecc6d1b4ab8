#include "SharedFiles/crash/handler/RawReport.h"

#include <array>
#include <bit>
#include <cerrno>

#include <execinfo.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <ucontext.h>
#include <unistd.h>

#include "SharedFiles/crash/handler/CrashFacts.h"

namespace crash {
namespace {

constexpr int mostFrames = 128;
constexpr auto mappings = "/proc/self/maps";

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

/// The lines of a file, one after another, without allocation. A line too long is cut.
class LineReader {
 public:
  explicit LineReader(const char* path) : file_(::open(path, O_RDONLY | O_CLOEXEC)) {}
  ~LineReader() {
    if (file_ >= 0) ::close(file_);
  }
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  /// The next line, without its end; null at the end of the file.
  const char* next() {
    std::size_t length = 0;
    char each = 0;
    while (nextCharacter(each) && each != '\n') {
      if (length + 1 < line_.size()) line_[length++] = each;
    }
    line_[length] = '\0';
    return ended_ && length == 0 ? nullptr : line_.data();
  }

 private:
  bool nextCharacter(char& each) {
    if (at_ == filled_) {
      const ssize_t count = file_ < 0 ? 0 : ::read(file_, buffer_.data(), buffer_.size());
      at_ = 0;
      filled_ = count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    ended_ = filled_ == 0;
    if (ended_) return false;
    each = buffer_[at_++];
    return true;
  }

  int file_;
  bool ended_ = false;
  std::size_t at_ = 0, filled_ = 0;
  std::array<char, 4096> buffer_{};
  std::array<char, 4352> line_{};
};

/// Reads a hexadecimal number and goes behind it.
std::uint64_t hexadecimal(const char*& text) {
  std::uint64_t number = 0;
  for (;; ++text) {
    if (*text >= '0' && *text <= '9') {
      number = number * 16 + static_cast<std::uint64_t>(*text - '0');
    } else if (*text >= 'a' && *text <= 'f') {
      number = number * 16 + static_cast<std::uint64_t>(*text - 'a') + 10;
    } else {
      return number;
    }
  }
}

struct Mapping {
  std::uint64_t start = 0, end = 0, offset = 0;
  const char* path = "";
};

/// start-end perms offset device inode path
Mapping mappingOf(const char* line) {
  Mapping mapping;
  mapping.start = hexadecimal(line);
  if (*line != '-') return mapping;
  mapping.end = hexadecimal(++line);
  const auto skipField = [&line] {
    while (*line == ' ') ++line;
    while (*line != ' ' && *line != '\0') ++line;
  };
  skipField();
  while (*line == ' ') ++line;
  mapping.offset = hexadecimal(line);
  skipField();
  skipField();
  while (*line == ' ') ++line;
  mapping.path = line;
  return mapping;
}

}  // namespace

void RawReport::prepare(const std::string& folder, const std::string& application, const std::string& version,
                        const std::string& host) {
  folder_ = folder;
  application_ = application;
  version_ = version;
  host_ = host;
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

  std::array<void*, mostFrames> frames{};
  const int count = ::backtrace(frames.data(), mostFrames);
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
    text_.add(folder_.c_str()).add('/');
    addReportName(text_, application_.c_str(), second, host_.c_str(), attempt);
    const int file = ::open(text_.text(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    text_.clear();
    if (file >= 0 || errno != EEXIST) return file;
  }
  return -1;
}

void RawReport::writeHead(const CrashRequest& request) {
  text_.add("Process:         ").add(application_.c_str()).add(" [");
  text_.addNumber(static_cast<std::uint64_t>(request.process)).add("]\nVersion:         ").add(version_.c_str());
  text_.add("\nDate:            ");
  addDate(text_, request.second);
  text_.add("\nSignal:          ");
  addSignal(text_, request.signal.si_signo, request.signal.si_code);
  if (hasAddress(request.signal.si_signo, request.signal.si_code)) {
    text_.add(", address ").addAddress(reinterpret_cast<std::uint64_t>(request.signal.si_addr));
  }
  if (request.exception[0] != '\0') text_.add("\nException:       ").add(request.exception.data());
  text_.add("\nCrashed Thread:  ").addNumber(static_cast<std::uint64_t>(request.thread));
  text_.add("\nNote:            written by the process itself; the other threads are not known\n\nThread ");
  text_.addNumber(static_cast<std::uint64_t>(request.thread)).add(" Crashed:\n");
  flush();
}

void RawReport::writeFrame(int number, std::uint64_t address) {
  text_.addNumber(static_cast<std::uint64_t>(number)).add("  ").addAddress(address);
  LineReader lines(mappings);
  while (const char* const line = lines.next()) {
    const Mapping mapping = mappingOf(line);
    if (address < mapping.start || address >= mapping.end) continue;
    text_.add("  ").add(mapping.path).add(" + ").addAddress(address - mapping.start + mapping.offset);
    break;
  }
  text_.add('\n');
}

void RawReport::writeMappings() {
  text_.add("\nMappings:\n");
  LineReader lines(mappings);
  while (const char* const line = lines.next()) {
    text_.add(line).add('\n');
    flush();
  }
}

void RawReport::flush() {
  std::size_t written = 0;
  while (written < text_.size()) {
    const ssize_t count = ::write(file_, text_.text() + written, text_.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    written += static_cast<std::size_t>(count);
  }
  text_.clear();
}

}  // namespace crash
