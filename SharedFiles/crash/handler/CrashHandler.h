#pragma once

#include <string>

namespace crash {

/// Where reports go and what they say of the program.
struct CrashHandlerSettings {
  std::string reportFolder;   ///< must be there; reports are made in it with mode 0600
  std::string application;    ///< the first part of a report's name
  std::string version;        ///< told in the report
  std::string reportProgram;  ///< lumacheck-crash-report's path
};

/// Has the process write a report when it dies of SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS or SIGTRAP, and then
/// die of that signal as it would have. Once in a process, on its main thread; false when that is done already, when
/// there is no memory for it, or under AddressSanitizer and ThreadSanitizer, which look after crashes themselves. A
/// signal that is ignored or that somebody else handles is left alone.
///
/// A report is written by the report program, which looks into the process from outside. It is started with clone and
/// execve (no handlers of fork run), permitted to trace this process, and given 10 seconds. Without its success the
/// handler writes a report of its own with the crashed thread's frames as addresses in modules.
///
/// The handler uses async-signal-safe calls only, on memory that is prepared here, and takes no lock: a crash inside
/// malloc, the dynamic linker or the log is a crash as any other. backtrace() is the one call that is not on the list
/// of safe ones. It runs only when the report program failed. It is called once here, which loads what it needs; from
/// then on it neither allocates nor locks with glibc 2.35 and GCC 12 or later (frames are found through
/// _dl_find_object, which is lock-free) unless code registers frames made at run time, which nothing here does. A
/// corrupt stack may make it crash: what was written so far stays.
///
/// A second crash on the same thread ends the step at hand and goes on with the next one; one on another thread waits
/// for the first; such a signal from another process changes nothing any more. Whatever happens, an alarm ends the
/// process after 13 seconds, of the first signal.
///
/// The text of an exception that nothing catches is kept for the report by a handler of std::terminate, which then
/// calls the one before it.
bool installCrashHandler(const CrashHandlerSettings& settings);

}  // namespace crash
