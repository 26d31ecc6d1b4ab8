#include "SharedFiles/crash/report/ProcessImage.h"

#include <array>
#include <cstdlib>

#include <cxxabi.h>
#include <elfutils/libdwfl.h>

namespace crash {
namespace {

std::string readable(const char* symbol) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(symbol, nullptr, nullptr, &status),
                                                         &std::free);
  return status == 0 && name ? name.get() : symbol;
}

std::string fileNameOf(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

std::string buildIdOf(Dwfl_Module* module) {
  GElf_Addr address = 0;
  const unsigned char* bits = nullptr;
  const int length = dwfl_module_build_id(module, &bits, &address);
  std::string digits;
  for (int i = 0; i < length; ++i) {
    digits += "0123456789abcdef"[bits[i] >> 4U];
    digits += "0123456789abcdef"[bits[i] & 15U];
  }
  return digits;
}

int addModule(Dwfl_Module* module, void** /*data*/, const char* name, Dwarf_Addr start, void* list) {
  GElf_Addr bias = 0;
  // Fonts and other data are mapped as well.
  if (dwfl_module_getelf(module, &bias) == nullptr) return DWARF_CB_OK;
  const char* path = nullptr;
  Dwarf_Addr end = 0;
  dwfl_module_info(module, nullptr, nullptr, &end, nullptr, nullptr, &path, nullptr);
  const std::string shown = path != nullptr ? path : name;
  static_cast<std::vector<LoadedModule>*>(list)->push_back({start, end, fileNameOf(name), shown, buildIdOf(module)});
  return DWARF_CB_OK;
}

const Dwfl_Callbacks callbacks{.find_elf = dwfl_linux_proc_find_elf,
                               .find_debuginfo = dwfl_standard_find_debuginfo,
                               .section_address = nullptr,
                               .debuginfo_path = nullptr};

}  // namespace

ProcessImage::ProcessImage(pid_t process) : process_(process) {
  static const Dwfl_Thread_Callbacks threadCallbacks{
      .next_thread = [](Dwfl*, void*, void**) -> pid_t { return 0; },
      .get_thread =
          [](Dwfl*, pid_t thread, void* image, void** argument) {
            *argument = image;
            return static_cast<ProcessImage*>(image)->thread_ == thread;
          },
      .memory_read =
          [](Dwfl*, Dwarf_Addr address, Dwarf_Word* word, void* image) {
            return readMemory(static_cast<ProcessImage*>(image)->process_, address, word, sizeof *word);
          },
      .set_initial_registers = &ProcessImage::setRegisters,
      .detach = nullptr,
      .thread_detach = nullptr};
  Dwfl* const dwfl = dwfl_begin(&callbacks);
  if (dwfl == nullptr) return;
  if (dwfl_linux_proc_report(dwfl, process) == 0 && dwfl_report_end(dwfl, nullptr, nullptr) == 0 &&
      dwfl_attach_state(dwfl, nullptr, process, &threadCallbacks, this)) {
    dwfl_ = dwfl;
  } else {
    dwfl_end(dwfl);
  }
}

ProcessImage::~ProcessImage() {
  if (dwfl_ != nullptr) dwfl_end(dwfl_);
}

bool ProcessImage::setRegisters(Dwfl_Thread* thread, void* image) {
  const ThreadRegisters& registers = static_cast<ProcessImage*>(image)->registers_;
  dwfl_thread_state_register_pc(thread, registers.programCounter);
  const std::vector<Dwarf_Word> words(registers.numbered.begin(), registers.numbered.end());
  return dwfl_thread_state_registers(thread, 0, static_cast<unsigned>(words.size()), words.data());
}

bool ProcessImage::isInModule(std::uint64_t address) const {
  return dwfl_addrmodule(dwfl_, address) != nullptr;
}

std::vector<StackFrame> ProcessImage::frames(pid_t thread, ThreadRegisters registers, std::size_t most) {
  std::vector<StackFrame> frames;
  if (dwfl_ == nullptr) return frames;
  if (!isInModule(registers.programCounter)) {
    frames.push_back(describe(registers.programCounter, false));
    if (!returnToCaller(registers, process_) || !isInModule(registers.programCounter)) return frames;
  }
  thread_ = thread;
  registers_ = std::move(registers);
  const std::size_t before = frames.size();
  auto add = [&](Dwfl_Frame* frame) {
    Dwarf_Addr address = 0;
    bool isActive = false;
    if (frames.size() >= most || !dwfl_frame_pc(frame, &address, &isActive)) return DWARF_CB_ABORT;
    frames.push_back(describe(address, !isActive));
    return DWARF_CB_OK;
  };
  using Add = decltype(add);
  const auto call = [](Dwfl_Frame* frame, void* adds) -> int { return (*static_cast<Add*>(adds))(frame); };
  dwfl_getthread_frames(dwfl_, thread, call, &add);
  if (frames.size() == before) frames.push_back(describe(registers_.programCounter, before > 0));
  return frames;
}

StackFrame ProcessImage::describe(std::uint64_t address, bool isReturnAddress) const {
  StackFrame frame;
  frame.address = address;
  // A return address may lie behind the end of the function that calls as its last act.
  const std::uint64_t inside = address - (isReturnAddress ? 1 : 0);
  Dwfl_Module* const module = dwfl_addrmodule(dwfl_, inside);
  if (module == nullptr) return frame;
  Dwarf_Addr start = 0;
  const char* const name = dwfl_module_info(module, nullptr, &start, nullptr, nullptr, nullptr, nullptr, nullptr);
  frame.module = name != nullptr ? fileNameOf(name) : "?";
  frame.offset = address - start;
  GElf_Off inSymbol = 0;
  GElf_Sym symbol{};
  const char* const found = dwfl_module_addrinfo(module, inside, &inSymbol, &symbol, nullptr, nullptr, nullptr);
  if (found != nullptr && *found != '\0') {
    frame.symbol = readable(found);
    frame.inSymbol = inSymbol + (isReturnAddress ? 1 : 0);
  }
  return frame;
}

std::vector<LoadedModule> ProcessImage::modules() const {
  std::vector<LoadedModule> modules;
  if (dwfl_ != nullptr) dwfl_getmodules(dwfl_, &addModule, &modules, 0);
  return modules;
}

}  // namespace crash
