#pragma once

/// Has the running program leave a crash report where QVCrashline looks for it: NAME_STAMP_HOST.crash in the user's
/// logs folder + "DiagnosticReports", which is made with mode 0700 when it is missing. NAME is the bundle's
/// CFBundleName. The reports are written by `lumacheck-crash-report` of the host bundle; see crash/CrashHandler.h for
/// what is promised.
///
/// Once, on the main thread, as early as possible, and before the log, whose own handler of uncaught exceptions then
/// comes first. Without such a folder the program runs on without reports.
void installCrashReporting();
