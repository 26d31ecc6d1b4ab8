#pragma once

#include <optional>
#include <string>

namespace cli {

/// The command's application log: none, so that many processes do not rotate one user's logs, or one file without
/// rotation. Lives as long as the command runs; the file is complete when it goes.
class LogSetup {
 public:
  /// Without a path: no log. An existing file is appended to. Must come before any entry.
  explicit LogSetup(const std::optional<std::string>& path);
  ~LogSetup();
  LogSetup(const LogSetup&) = delete;
  LogSetup& operator=(const LogSetup&) = delete;

  /// A sentence when the file cannot be opened, else empty.
  const std::string& problem() const { return problem_; }

 private:
  std::string problem_;
};

}  // namespace cli
