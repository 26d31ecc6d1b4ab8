#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "SharedFiles/crash/report/ThreadRegisters.h"

struct Dwfl;
struct Dwfl_Frame;
struct Dwfl_Thread;

namespace crash {

/// A call on a thread's stack.
struct StackFrame {
  std::uint64_t address = 0;
  std::string module;          ///< its file's name; empty when nothing is loaded there
  std::uint64_t offset = 0;    ///< of the address, from where the module begins
  std::string symbol;          ///< readable; empty when not known
  std::uint64_t inSymbol = 0;  ///< bytes from the symbol's beginning
};

struct LoadedModule {
  std::uint64_t start = 0, end = 0;
  std::string name, path, buildId;  ///< build id in hexadecimal digits; empty when it has none
};

/// What is loaded into another process, and the way up its threads' stacks, by libdwfl. Nothing is fetched from
/// anywhere: symbols are those of the files on this machine. Used on one thread, while the threads asked for stand
/// still.
class ProcessImage {
 public:
  explicit ProcessImage(pid_t process);
  ~ProcessImage();
  ProcessImage(const ProcessImage&) = delete;
  ProcessImage& operator=(const ProcessImage&) = delete;

  /// False when the process could not be looked into: then there are neither frames nor modules.
  bool isOpen() const { return dwfl_ != nullptr; }

  /// The innermost first; `most` at most. At least the one that the program counter tells.
  std::vector<StackFrame> frames(pid_t thread, ThreadRegisters registers, std::size_t most);
  std::vector<LoadedModule> modules() const;  ///< programs and libraries

 private:
  static bool setRegisters(Dwfl_Thread* thread, void* image);
  StackFrame describe(std::uint64_t address, bool isReturnAddress) const;
  bool isInModule(std::uint64_t address) const;

  pid_t process_;
  Dwfl* dwfl_ = nullptr;
  pid_t thread_ = 0;  ///< being unwound
  ThreadRegisters registers_;
};

}  // namespace crash
