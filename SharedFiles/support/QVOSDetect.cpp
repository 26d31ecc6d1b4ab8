#include "SharedFiles/support/QVOSDetect.h"

#include <QByteArray>
#include <QFile>
#include <QVersionNumber>
#include <cerrno>
#include <utility>

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
  const QByteArray value = versionIdOf(*text);
  if (value.isEmpty()) return tl::unexpected(ENODATA);
  const QVersionNumber version = QVersionNumber::fromString(QString::fromUtf8(value));
  if (version.isNull()) return tl::unexpected(EINVAL);
  return OSVersion{version.majorVersion(), version.minorVersion(), version.microVersion()};
}

OSVersion QVOSDetect::runningVersion() {
  if (const auto version = operatingSystemVersion()) return *version;
  unsigned int major = 0, minor = 0, bugFix = 0;
  getSystemVersionMajor(&major, &minor, &bugFix);
  return {static_cast<int>(major), static_cast<int>(minor), static_cast<int>(bugFix)};
}

QString QVOSDetect::osVersionString(const OSVersion& running) {
  return formatLog("%li.%li.%li", running.majorVersion, running.minorVersion, running.patchVersion);
}

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
