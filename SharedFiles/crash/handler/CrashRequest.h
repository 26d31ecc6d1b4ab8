#pragma once

#include <array>
#include <csignal>
#include <cstdint>
#include <type_traits>

#include <sys/types.h>

namespace crash {

/// What a crashed process tells the program that writes its report, as bytes through a pipe that is the program's
/// standard input. Both come from one build. The process and the thread may be looked into until the answer is there:
/// the program's exit status, 0 once the report has its name.
struct CrashRequest {
  static constexpr std::uint32_t expectedMark = 0x4c4d4352;

  std::uint32_t mark = expectedMark;
  std::uint32_t size = sizeof(CrashRequest);
  pid_t process = 0;
  pid_t thread = 0;           ///< the one that crashed; it waits in its signal handler
  std::int64_t second = 0;    ///< of the crash, from 1970
  std::uint64_t context = 0;  ///< where its ucontext_t lies: the registers at the crash
  siginfo_t signal{};
  std::array<char, 1024> exception{};  ///< of an exception that nothing caught, with a final zero; empty when none
};

static_assert(std::is_trivially_copyable_v<CrashRequest>);
static_assert(sizeof(CrashRequest) < 4096, "written into a pipe in one piece");

}  // namespace crash
