#include "SharedFiles/crash/report/ThreadRegisters.h"

#include <bit>

#include <elf.h>
#include <sys/ptrace.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <ucontext.h>

namespace crash {
namespace {

#if defined(__x86_64__)
constexpr std::size_t stackPointer = 7;
constexpr std::size_t returnAddress = 16;

ThreadRegisters fromUser(const user_regs_struct& user) {
  return {{user.rax, user.rdx, user.rcx, user.rbx, user.rsi, user.rdi, user.rbp, user.rsp, user.r8, user.r9, user.r10,
           user.r11, user.r12, user.r13, user.r14, user.r15, user.rip},
          user.rip};
}

ThreadRegisters fromContext(const ucontext_t& context) {
  ThreadRegisters registers;
  for (const int number : {REG_RAX, REG_RDX, REG_RCX, REG_RBX, REG_RSI, REG_RDI, REG_RBP, REG_RSP, REG_R8, REG_R9,
                           REG_R10, REG_R11, REG_R12, REG_R13, REG_R14, REG_R15, REG_RIP}) {
    registers.numbered.push_back(static_cast<std::uint64_t>(context.uc_mcontext.gregs[number]));
  }
  registers.programCounter = registers.numbered[returnAddress];
  return registers;
}
#elif defined(__aarch64__)
ThreadRegisters fromUser(const user_regs_struct& user) {
  ThreadRegisters registers{{std::begin(user.regs), std::end(user.regs)}, user.pc};
  registers.numbered.push_back(user.sp);
  return registers;
}

ThreadRegisters fromContext(const ucontext_t& context) {
  ThreadRegisters registers{{std::begin(context.uc_mcontext.regs), std::end(context.uc_mcontext.regs)},
                            context.uc_mcontext.pc};
  registers.numbered.push_back(context.uc_mcontext.sp);
  return registers;
}
#else
#error "The registers of this processor are not known here."
#endif

}  // namespace

bool readMemory(pid_t process, std::uint64_t address, void* into, std::size_t size) {
  const iovec here{into, size};
  const iovec there{std::bit_cast<void*>(address), size};
  return ::process_vm_readv(process, &here, 1, &there, 1, 0) == static_cast<ssize_t>(size);
}

std::optional<ThreadRegisters> registersOfStopped(pid_t thread) {
  user_regs_struct user{};
  iovec into{&user, sizeof user};
  if (::ptrace(PTRACE_GETREGSET, thread, NT_PRSTATUS, &into) != 0 || into.iov_len != sizeof user) return std::nullopt;
  return fromUser(user);
}

std::optional<ThreadRegisters> registersOfContext(pid_t process, std::uint64_t context) {
  ucontext_t read{};
  // What comes after the registers need not be there in full.
  const std::size_t size = offsetof(ucontext_t, uc_mcontext) + sizeof read.uc_mcontext;
  if (context == 0 || !readMemory(process, context, &read, size)) return std::nullopt;
  return fromContext(read);
}

bool returnToCaller(ThreadRegisters& registers, pid_t process) {
#if defined(__x86_64__)
  std::uint64_t& stack = registers.numbered[stackPointer];
  std::uint64_t caller = 0;
  if (!readMemory(process, stack, &caller, sizeof caller)) return false;
  stack += sizeof caller;
  registers.numbered[returnAddress] = caller;
#else
  constexpr std::size_t linkRegister = 30;
  const std::uint64_t caller = registers.numbered[linkRegister];
  static_cast<void>(process);
#endif
  registers.programCounter = caller;
  return true;
}

}  // namespace crash
