// crasher FOLDER REPORT_PROGRAM KIND: installs the crash handler, says "ready" and crashes in that way.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include "SharedFiles/crash/handler/CrashHandler.h"
#include "SharedFiles/crash/handler/ThreadCrashStack.h"

extern "C" void* __libc_malloc(std::size_t size);  // NOLINT(clang-diagnostic-reserved-identifier)

namespace {
pthread_mutex_t mallocLock = PTHREAD_MUTEX_INITIALIZER;
}

/// As glibc's, behind a lock that can be held for good.
extern "C" [[gnu::visibility("default")]] void* malloc(std::size_t size) {
  pthread_mutex_lock(&mallocLock);
  void* const memory = __libc_malloc(size);
  pthread_mutex_unlock(&mallocLock);
  return memory;
}

namespace crashing {

volatile int zero = 0;
int* volatile nowhere = nullptr;
void (*volatile noFunction)() = nullptr;
volatile int sink = 0;

[[gnu::noinline]] void dereferencesNull() {
  *nowhere = 1;
}

[[gnu::noinline]] int recursesForever(int depth) {
  volatile unsigned char room[200];
  room[0] = static_cast<unsigned char>(depth);
  const int deeper = zero == 0 ? recursesForever(depth + 1) : 0;
  return deeper + room[0];
}

[[gnu::noinline]] void callsNothing() {
  noFunction();
  sink = 1;
}

[[gnu::noinline]] void dividesByZero() {
  sink = 100 / zero;
}

[[gnu::noinline]] void readsBehindItsFile() {
  const int file = memfd_create("crasher", 0);
  if (ftruncate(file, 4096) != 0) return;
  auto* const memory = static_cast<volatile char*>(mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file, 0));
  if (ftruncate(file, 0) != 0) return;
  sink = memory[0];
}

[[gnu::noinline]] void meetsAnInvalidInstruction() {
  __builtin_trap();
}

[[gnu::noinline]] void throwsUncaught() {
  throw std::runtime_error("the reason of it");
}

[[gnu::noinline]] void throwsANumber() {
  throw 7;
}

[[gnu::noinline]] void losesItsStack() {
#if defined(__x86_64__)
  asm volatile("mov $0x10, %rsp\n mov $0x18, %rbp\n movl $1, 0");
#elif defined(__aarch64__)
  asm volatile("mov x9, #16\n mov sp, x9\n mov x29, #24\n str xzr, [x9]");
#endif
}

[[gnu::noinline]] void waitsForever() {
  for (;;) std::this_thread::sleep_for(std::chrono::seconds(100));
}

void onAThread(void (*function)()) {
  std::thread([function] {
    const crash::ThreadCrashStack stack;
    pthread_setname_np(pthread_self(), "player");
    function();
  }).join();
}

void overflowsOnAThread() {
  onAThread([] { sink = recursesForever(0); });
}

void crashesInsideMalloc() {
  pthread_mutex_lock(&mallocLock);
  dereferencesNull();
}

void crashesWhileTheLoaderIsLocked() {
  static std::atomic<bool> locked = false;
  std::thread([] {
    dl_iterate_phdr(
        [](dl_phdr_info*, std::size_t, void*) {
          locked = true;
          waitsForever();
          return 0;
        },
        nullptr);
  }).detach();
  while (!locked) std::this_thread::yield();
  dereferencesNull();
}

void crashesInsideALock() {
  static std::mutex lock;
  static std::atomic<int> waiting = 0;
  lock.lock();
  for (int i = 0; i < 4; ++i) {
    std::thread([] {
      ++waiting;
      const std::lock_guard guard(lock);
    }).detach();
  }
  while (waiting < 4) std::this_thread::yield();
  dereferencesNull();
}

void crashesAmongManyThreads() {
  static std::atomic<int> started = 0;
  constexpr int many = 64;
  for (int i = 0; i < many; ++i) {
    std::thread([i] {
      ++started;
      if (i % 2 == 0) waitsForever();
      for (;;) sink = sink + 1;
    }).detach();
  }
  while (started < many) std::this_thread::yield();
  dereferencesNull();
}

void crashesOnManyThreadsAtOnce() {
  static std::atomic<int> started = 0;
  constexpr int many = 64;
  for (int i = 0; i < many; ++i) {
    std::thread([i] {
      ++started;
      while (started < many) std::this_thread::yield();
      if (i % 2 == 0) dereferencesNull();
      std::abort();
    }).detach();
  }
  waitsForever();
}

void crashesWithoutDescriptors() {
  while (open("/dev/null", O_RDONLY) >= 0) {
  }
  dereferencesNull();
}

void crashesWithoutMemory() {
  const rlimit little{1 << 16, 1 << 16};
  setrlimit(RLIMIT_DATA, &little);
  dereferencesNull();
}

void handlesDivisionItself() {
  std::signal(SIGFPE, [](int) { _exit(33); });
}

const std::map<std::string, void (*)()> kinds{
    {"null", dereferencesNull},
    {"null-on-thread", [] { onAThread(dereferencesNull); }},
    {"overflow", [] { sink = recursesForever(0); }},
    {"overflow-on-thread", overflowsOnAThread},
    {"call", callsNothing},
    {"divide", dividesByZero},
    {"own-divide", dividesByZero},
    {"bus", readsBehindItsFile},
    {"illegal", meetsAnInvalidInstruction},
    {"abort", [] { std::abort(); }},
    {"exception", throwsUncaught},
    {"exception-on-thread", [] { onAThread(throwsUncaught); }},
    {"number", throwsANumber},
    {"stack", losesItsStack},
    {"malloc", crashesInsideMalloc},
    {"loader", crashesWhileTheLoaderIsLocked},
    {"lock", crashesInsideALock},
    {"many", crashesAmongManyThreads},
    {"all", crashesOnManyThreadsAtOnce},
    {"descriptors", crashesWithoutDescriptors},
    {"memory", crashesWithoutMemory},
    {"system", [] { raise(SIGSYS); }},
    {"trap", [] { raise(SIGTRAP); }},
    {"ignored-trap", [] { raise(SIGTRAP); }},
    {"wait", waitsForever},
    {"nothing", [] {}},
};

}  // namespace crashing

int main(int argc, char** argv) {
  if (argc != 4 || crashing::kinds.count(argv[3]) == 0) return 64;
  const std::string kind = argv[3];
  if (kind == "own-divide") crashing::handlesDivisionItself();
  if (kind == "ignored-trap") std::signal(SIGTRAP, SIG_IGN);
  if (!crash::installCrashHandler(
          {.reportFolder = argv[1], .application = "Crasher", .version = "1.2.3", .reportProgram = argv[2]})) {
    return 65;
  }
  if (crash::installCrashHandler(
          {.reportFolder = argv[1], .application = "Twice", .version = "", .reportProgram = ""})) {
    return 66;
  }
  std::puts("ready");
  std::fflush(stdout);
  crashing::kinds.at(kind)();
  return 0;
}
