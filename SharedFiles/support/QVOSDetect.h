#pragma once

#include <QString>
#include <compare>
#include <cstdint>
#include <functional>

#include <tl/expected.hpp>

/// A system's version: what the system calls major, minor and bug fix.
struct OSVersion {
  int majorVersion = 0, minorVersion = 0, patchVersion = 0;

  auto operator<=>(const OSVersion&) const = default;  // NOLINT(modernize-use-nullptr): of the code it stands for
};

/// Which version of the operating system runs. Stateless; callable from any thread. The version is read at every call:
/// VERSION_ID of os-release(5), up to three whole numbers of it ("22.04" is 22.4.0). Where there is none it is 10.5.0,
/// with a line on the system console.
class QVOSDetect final {
 public:
  QVOSDetect() = delete;

  /// Answers a selector of four characters with a number, or with an error code.
  using Gestalt = std::function<tl::expected<std::int32_t, long>(std::uint32_t selector)>;

  static constexpr OSVersion fallbackVersion = {10, 5, 0};

  /// operatingSystemVersion, else getSystemVersionMajor:minor:bugFix:
  static OSVersion runningVersion();
  /// operatingSystemVersion of the process's information: VERSION_ID of /etc/os-release or, where that file is missing,
  /// of /usr/lib/os-release. Else an errno: ENODATA for a file without it, EINVAL for one that is no number or too
  /// large. `root` goes before the paths.
  static tl::expected<OSVersion, int> operatingSystemVersion(const QString& root = {});

  /// isOSVersionAtLeast:minor:bugfix:
  static bool isOSVersionAtLeast(int major, int minor, int bugfix, const OSVersion& running = runningVersion()) {
    return running >= OSVersion{major, minor, bugfix};
  }
  static bool isLeopardOrHigher(const OSVersion& running = runningVersion()) { return running >= OSVersion{10, 5, 0}; }
  static bool isSnowLeopardOrHigher(const OSVersion& running = runningVersion()) {
    return running >= OSVersion{10, 6, 0};
  }
  static bool isLionOrHigher(const OSVersion& running = runningVersion()) { return running >= OSVersion{10, 7, 0}; }
  static bool isMountainLionOrHigher(const OSVersion& running = runningVersion()) {
    return running >= OSVersion{10, 8, 0};
  }
  static bool isMavericksOrHigher(const OSVersion& running = runningVersion()) {
    return running >= OSVersion{10, 9, 0};
  }
  static bool isYosemiteOrHigher(const OSVersion& running = runningVersion()) {
    return running >= OSVersion{10, 10, 0};
  }
  static bool isElCapitanOrHigher(const OSVersion& running = runningVersion()) {
    return running >= OSVersion{10, 11, 0};
  }
  static bool isSierraOrHigher(const OSVersion& running = runningVersion()) { return running >= OSVersion{10, 12, 0}; }

  /// The three numbers with dots between.
  static QString osVersionString(const OSVersion& running = runningVersion());
  static QString osxVersion(const OSVersion& running = runningVersion()) { return osVersionString(running); }

  /// getSystemVersionMajor:minor:bugFix: from 'sysv', which below 0x1040 is the version in binary-coded decimals and
  /// above leaves it to 'sys1', 'sys2' and 'sys3'. Each pointer may be null. When a selector fails: fallbackVersion,
  /// and its error code on the system console.
  static void getSystemVersionMajor(unsigned int* major, unsigned int* minor, unsigned int* bugFix,
                                    const Gestalt& gestalt = systemGestalt);
  /// The selectors of this system: 'sysv' leaves it to the others, which are those of operatingSystemVersion().
  static tl::expected<std::int32_t, long> systemGestalt(std::uint32_t selector);
};
