#include "SharedFiles/support/QVOSDetect.h"

#include <QByteArray>
#include <QFile>
#include <array>
#include <cerrno>
#include <charconv>
#include <system_error>

#include "SharedFiles/log/LogFormat.h"
#include "SharedFiles/log/SystemConsole.h"

namespace {

constexpr std::uint32_t selectorOf(const char (&name)[5]) {
  std::uint32_t selector = 0;
  for (std::size_t i = 0; i < 4; ++i) selector = selector << 8 | static_cast<unsigned char>(name[i]);
  return selector;
}

constexpr std::uint32_t sysv = selectorOf("sysv"), sys1 = selectorOf("sys1"), sys2 = selectorOf("sys2"),
                        sys3 = selectorOf("sys3");
/// From here on 'sysv' has no room for the version.
constexpr std::int32_t firstVersionInParts = 0x1040;

/// The text of a file; the reason where it cannot be opened.
tl::expected<QByteArray, int> textOf(const QString& path) {
  constexpr qint64 enough = 65536;
  QFile file(path);
  errno = 0;
  if (file.open(QIODevice::ReadOnly)) return file.read(enough);
  return tl::unexpected(errno != 0 ? errno : ENOENT);
}

/// A value as a shell takes it, without the quotes around it.
QByteArray unquoted(QByteArray value) {
  value = value.trimmed();
  const bool quoted = value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value[0];
  return quoted ? value.mid(1, value.size() - 2) : value;
}

/// The value of the last assignment to VERSION_ID; nil when there is none.
QByteArray versionIdOf(const QByteArray& text) {
  constexpr QByteArrayView key("VERSION_ID=");
  QByteArray value;
  for (const QByteArray& line : text.split('\n')) {
    const QByteArray assignment = line.trimmed();
    if (assignment.startsWith(key)) value = unquoted(assignment.mid(key.size()));
  }
  return value;
}

/// Up to three numbers with dots between; what follows a number's digits ends the version.
tl::expected<OSVersion, int> versionFrom(const QByteArray& text) {
  std::array<int, 3> numbers = {};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const bool digit = at != end && *at >= '0' && *at <= '9';
    if (!digit && i == 0) return tl::unexpected(EINVAL);
    if (!digit) break;
    const auto [rest, error] = std::from_chars(at, end, numbers[i]);
    if (error == std::errc::result_out_of_range) return tl::unexpected(ERANGE);
    if (rest == end || *rest != '.') break;
    at = rest + 1;
  }
  return OSVersion{numbers[0], numbers[1], numbers[2]};
}

tl::expected<OSVersion, long> versionFromParts(const QVOSDetect::Gestalt& gestalt) {
  OSVersion version;
  for (const auto& [selector, number] : {std::pair(sys1, &version.majorVersion), std::pair(sys2, &version.minorVersion),
                                         std::pair(sys3, &version.patchVersion)}) {
    const auto answer = gestalt(selector);
    if (!answer) return tl::unexpected(answer.error());
    *number = *answer;
  }
  return version;
}

tl::expected<OSVersion, long> versionFromSelectors(const QVOSDetect::Gestalt& gestalt) {
  const auto answer = gestalt(sysv);
  if (!answer) return tl::unexpected(answer.error());
  if (*answer >= firstVersionInParts) return versionFromParts(gestalt);
  const auto digit = [value = *answer](int place) { return value >> (4 * place) & 15; };
  return OSVersion{digit(3) * 10 + digit(2), digit(1), digit(0)};
}

}  // namespace

tl::expected<OSVersion, int> QVOSDetect::operatingSystemVersion(const QString& root) {
  auto text = textOf(root + "/etc/os-release");
  if (!text) text = textOf(root + "/usr/lib/os-release");
  if (!text) return tl::unexpected(text.error());
  const QByteArray version = versionIdOf(*text);
  if (version.isEmpty()) return tl::unexpected(ENODATA);
  return versionFrom(version);
}

OSVersion QVOSDetect::runningVersion() {
  if (const auto version = operatingSystemVersion()) return *version;
  unsigned int major = 0, minor = 0, bugFix = 0;
  getSystemVersionMajor(&major, &minor, &bugFix);
  return {static_cast<int>(major), static_cast<int>(minor), static_cast<int>(bugFix)};
}

// isOSVersionAtLeast:minor:bugfix:
bool QVOSDetect::isOSVersionAtLeast(int major, int minor, int bugfix, const OSVersion& running) {
  return running >= OSVersion{major, minor, bugfix};
}

bool QVOSDetect::isLeopardOrHigher(const OSVersion& running) {
  return isOSVersionAtLeast(10, 5, 0, running);
}
bool QVOSDetect::isSnowLeopardOrHigher(const OSVersion& running) {
  return isOSVersionAtLeast(10, 6, 0, running);
}
bool QVOSDetect::isLionOrHigher(const OSVersion& running) {
  return isOSVersionAtLeast(10, 7, 0, running);
}
bool QVOSDetect::isMountainLionOrHigher(const OSVersion& running) {
  return isOSVersionAtLeast(10, 8, 0, running);
}
bool QVOSDetect::isMavericksOrHigher(const OSVersion& running) {
  return isOSVersionAtLeast(10, 9, 0, running);
}
bool QVOSDetect::isYosemiteOrHigher(const OSVersion& running) {
  return isOSVersionAtLeast(10, 10, 0, running);
}
bool QVOSDetect::isElCapitanOrHigher(const OSVersion& running) {
  return isOSVersionAtLeast(10, 11, 0, running);
}
bool QVOSDetect::isSierraOrHigher(const OSVersion& running) {
  return isOSVersionAtLeast(10, 12, 0, running);
}

QString QVOSDetect::osVersionString(const OSVersion& running) {
  return formatLog("%li.%li.%li", static_cast<long>(running.majorVersion), static_cast<long>(running.minorVersion),
                   static_cast<long>(running.patchVersion));
}
QString QVOSDetect::osxVersion(const OSVersion& running) {
  return osVersionString(running);
}

// getSystemVersionMajor:minor:bugFix:
void QVOSDetect::getSystemVersionMajor(unsigned int* major, unsigned int* minor, unsigned int* bugFix,
                                       const Gestalt& gestalt) {
  auto version = versionFromSelectors(gestalt);
  if (!version) {
    logToConsole("Unable to obtain system version: %ld", version.error());
    version = fallbackVersion;
  }
  if (major) *major = static_cast<unsigned int>(version->majorVersion);
  if (minor) *minor = static_cast<unsigned int>(version->minorVersion);
  if (bugFix) *bugFix = static_cast<unsigned int>(version->patchVersion);
}

tl::expected<std::int32_t, long> QVOSDetect::systemGestalt(std::uint32_t selector) {
  constexpr long undefinedSelector = -5551;
  const auto version = operatingSystemVersion();
  if (!version) return tl::unexpected(version.error());
  switch (selector) {
    case sysv:
      return firstVersionInParts;
    case sys1:
      return version->majorVersion;
    case sys2:
      return version->minorVersion;
    case sys3:
      return version->patchVersion;
    default:
      return tl::unexpected(undefinedSelector);
  }
}
