#include "SharedFiles/crash/handler/ThreadCrashStack.h"

#include <csignal>

#include <sys/mman.h>

#include "SharedFiles/crash/handler/Sanitizers.h"

namespace crash {

ThreadCrashStack::ThreadCrashStack() {
  stack_t present{};
  if (isSanitized || ::sigaltstack(nullptr, &present) != 0 || (present.ss_flags & SS_DISABLE) == 0) return;
  void* const memory = ::mmap(nullptr, guard + size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
  if (memory == MAP_FAILED) return;
  stack_t stack{};
  stack.ss_sp = static_cast<char*>(memory) + guard;
  stack.ss_size = size;
  if (::mprotect(stack.ss_sp, size, PROT_READ | PROT_WRITE) == 0 && ::sigaltstack(&stack, nullptr) == 0) {
    memory_ = memory;
  } else {
    ::munmap(memory, guard + size);
  }
}

ThreadCrashStack::~ThreadCrashStack() {
  if (memory_ == nullptr) return;
  stack_t none{};
  none.ss_flags = SS_DISABLE;
  if (::sigaltstack(&none, nullptr) == 0) ::munmap(memory_, guard + size);
}

}  // namespace crash
