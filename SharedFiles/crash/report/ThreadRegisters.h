#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include <sys/types.h>

namespace crash {

/// The registers that unwinding starts from, in the order of DWARF's numbers for this processor, the program counter
/// apart (where it has a number of its own it is in the list too).
struct ThreadRegisters {
  std::vector<std::uint64_t> numbered;
  std::uint64_t programCounter = 0;
};

/// Reads another process's memory; false when not all of it can be read.
bool readMemory(pid_t process, std::uint64_t address, void* into, std::size_t size);

/// Of a thread that this process traces and that is stopped.
std::optional<ThreadRegisters> registersOfStopped(pid_t thread);

/// As a signal handler found them: from the ucontext_t at that address of the process.
std::optional<ThreadRegisters> registersOfContext(pid_t process, std::uint64_t context);

/// Makes it look as if a call that led to nowhere (through a bad function pointer) had returned.
bool returnToCaller(ThreadRegisters& registers, pid_t process);

}  // namespace crash
