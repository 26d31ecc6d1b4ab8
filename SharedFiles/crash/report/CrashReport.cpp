#include "SharedFiles/crash/report/CrashReport.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include "SharedFiles/crash/handler/CrashFacts.h"
#include "SharedFiles/crash/report/StoppedThreads.h"
#include "system/Descriptor.h"
#include "system/FileBytes.h"

namespace crash {
namespace {

std::string firstLineOf(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

std::string systemName() {
  std::string name = "Linux";
  std::ifstream file("/etc/os-release");
  for (std::string line; std::getline(file, line);) {
    constexpr std::string_view key = "PRETTY_NAME=";
    if (line.compare(0, key.size(), key) != 0) continue;
    name = line.substr(key.size());
    std::erase(name, '"');
  }
  utsname kernel{};
  if (::uname(&kernel) != 0) return name;
  return name + ", " + kernel.sysname + ' ' + kernel.release + ' ' + kernel.machine;
}

std::string nameOfThread(pid_t process, pid_t thread) {
  return firstLineOf("/proc/" + std::to_string(process) + "/task/" + std::to_string(thread) + "/comm");
}

std::string hex(std::uint64_t number) {
  SignalSafeText text;
  return text.addAddress(number).text();
}

void add(std::string& text, const char* title, const std::string& value) {
  constexpr std::size_t column = 17;
  std::string line = std::string(title) + ':';
  line.resize(std::max(line.size() + 1, column), ' ');
  text += line + value + '\n';
}

std::string signalText(const siginfo_t& signal) {
  SignalSafeText text;
  addSignal(text, signal);
  return text.text();
}

std::string dateText(std::int64_t second) {
  SignalSafeText text;
  addDate(text, second);
  return text.text();
}

void addFrames(std::string& text, const std::vector<StackFrame>& frames) {
  std::size_t number = 0;
  for (const StackFrame& frame : frames) {
    text += std::to_string(number++) + "  " + hex(frame.address) + "  ";
    text += frame.module.empty() ? "(nothing is loaded there)" : frame.module + " + " + hex(frame.offset);
    if (!frame.symbol.empty()) text += "  " + frame.symbol + " + " + std::to_string(frame.inSymbol);
    text += '\n';
  }
  if (frames.size() >= mostFrames) text += "...\n";
  if (frames.empty()) text += "(its stack could not be read)\n";
}

std::string nameOf(const CrashReport& report, int attempt) {
  SignalSafeText name;
  addReportName(name, report.application.c_str(), report.request.second, report.host.c_str(), attempt);
  return name.text();
}

/// Gives the finished file the first of its names that is free.
bool giveName(int folder, const std::string& unfinished, const CrashReport& report) {
  for (int attempt = 1; attempt <= nameAttempts; ++attempt) {
    if (::renameat2(folder, unfinished.c_str(), folder, nameOf(report, attempt).c_str(), RENAME_NOREPLACE) == 0) {
      return true;
    }
    if (errno != EEXIST) break;
  }
  return false;
}

}  // namespace

CrashReport examine(const CrashRequest& request, std::string application, std::string version) {
  CrashReport report;
  report.application = std::move(application);
  report.version = std::move(version);
  report.request = request;
  const pid_t process = request.process;
  std::error_code error;
  report.path = std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/exe", error).string();
  report.system = systemName();
  report.host = hostName();

  const StoppedThreads others(process, request.thread);
  ProcessImage image(process);
  const auto registers = registersOfContext(process, request.context);
  if (!image.isOpen() || !registers) return report;
  report.threads.push_back(
      {request.thread, nameOfThread(process, request.thread), image.frames(request.thread, *registers, mostFrames)});
  for (const pid_t thread : others.all()) {
    ThreadReport& added = report.threads.emplace_back(ThreadReport{thread, nameOfThread(process, thread), {}});
    if (const auto stopped = registersOfStopped(thread)) added.frames = image.frames(thread, *stopped, mostFrames);
  }
  report.modules = image.modules();
  return report;
}

std::string textOf(const CrashReport& report) {
  std::string text;
  add(text, "Process", report.application + " [" + std::to_string(report.request.process) + ']');
  add(text, "Path", report.path);
  add(text, "Version", report.version);
  add(text, "Date", dateText(report.request.second));
  add(text, "System", report.system);
  add(text, "Host", report.host);
  add(text, "Signal", signalText(report.request.signal));
  if (report.request.exception[0] != '\0') add(text, "Exception", report.request.exception.data());
  add(text, "Crashed Thread", std::to_string(report.request.thread));
  bool crashed = true;
  for (const ThreadReport& thread : report.threads) {
    text += "\nThread " + std::to_string(thread.thread) + (crashed ? " Crashed" : "") + ": " + thread.name + '\n';
    addFrames(text, thread.frames);
    crashed = false;
  }
  text += "\nModules:\n";
  for (const LoadedModule& module : report.modules) {
    text += hex(module.start) + " - " + hex(module.end) + "  " + module.name + "  " +
            (module.buildId.empty() ? "(no build id)" : module.buildId) + "  " + module.path + '\n';
  }
  return text;
}

bool writeReport(const std::string& folder, const CrashReport& report) {
  ::mkdir(folder.c_str(), S_IRWXU);
  const sys::Descriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory.isOpen()) return false;
  // Begins with a dot: nobody takes it for a report before it is one.
  const std::string unfinished = "." + report.application + "-" + std::to_string(::getpid()) + ".partial";
  const sys::Descriptor file(::openat(directory.get(), unfinished.c_str(),
                                      O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file.isOpen()) return false;
  const bool written = sys::writeAll(file.get(), textOf(report)) == 0 && ::fsync(file.get()) == 0;
  if (written && giveName(directory.get(), unfinished, report)) {
    ::fsync(directory.get());
    return true;
  }
  ::unlinkat(directory.get(), unfinished.c_str(), 0);
  return false;
}

}  // namespace crash
