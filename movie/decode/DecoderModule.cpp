#include "movie/decode/DecoderModule.h"

#include <array>
#include <cstdlib>
#include <future>

#include <dlfcn.h>
#include <unistd.h>

namespace movie {
namespace {

/// Of the running program; empty when the system does not tell.
std::string executableFolder() {
  std::array<char, 4096> path{};
  const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
  if (length <= 0) return {};
  const std::string whole(path.data(), static_cast<std::size_t>(length));
  return whole.substr(0, whole.rfind('/'));
}

std::string modulePath(const std::string& name) {
  const char* const folder = std::getenv("LUMACHECK_MODULES");
  if (folder != nullptr && *folder != '\0') return std::string(folder) + '/' + name;
  return executableFolder() + "/../" LUMACHECK_MODULE_DIR "/" + name;
}

/// The one load of this process. The end of the process waits for it.
const std::shared_future<Result<MovieDecoderBackend*>>& loading() {
  static const auto backend = std::async(std::launch::async | std::launch::deferred, [] {
                                return exportedBy<MovieDecoderBackend>("movie-ffmpeg.so", "lumacheckDecoderBackend");
                              }).share();
  return backend;
}

}  // namespace

Result<void*> moduleEntry(const std::string& moduleName, const char* entry) {
  const std::string path = modulePath(moduleName);
  // Lazily bound: of libav's thousands of symbols a run touches few.
  void* const module = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (module == nullptr) {
    const char* const said = ::dlerror();
    return failed(path, {Reason::ModuleUnloadable, {said != nullptr ? verbatim(said) : Reason::NoReasonGiven}});
  }
  void* const symbol = ::dlsym(module, entry);
  if (symbol == nullptr) return failed(path, Reason::ModuleWithoutEntry);
  return symbol;
}

void preloadDecoder() {
  loading();
}

Result<MovieDecoderBackend*> decoderBackend() {
  return loading().get();
}

}  // namespace movie
