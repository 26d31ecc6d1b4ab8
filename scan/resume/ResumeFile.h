#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <tl/expected.hpp>

#include "scan/resume/ResumeBytes.h"
#include "system/Descriptor.h"
#include "system/FileCalls.h"

namespace scan {

/// Why there is no file to keep a scan in, or why it could not be kept.
struct ResumeProblem {
  enum class What {
    Unusable,      ///< the system refused: `code`
    NoFile,        ///< a folder, a device
    Foreign,       ///< a file that holds something else, and is left as it is
    OtherVersion,  ///< kept by another version of this program
    OtherScan,     ///< of other movies, of what they were before, or with other options
    InUse,         ///< another scan is writing to it
  } what = What::Unusable;
  int code = 0;  ///< an errno
};

/// Keeps a scan in a file while it goes on: what is final is there after a crash at any moment, but for the last
/// seconds. One writer at a time. Used by one thread.
class ResumeFile final : public ScanKeeper {
 public:
  using Clock = std::chrono::steady_clock;
  /// A file that is not there is made; one that is there goes on. `pause`: what is final is written so often.
  static tl::expected<ResumeFile, ResumeProblem> at(const std::string& path, const ResumeSubject& subject,
                                                    Clock::duration pause = std::chrono::milliseconds(500),
                                                    sys::FileCalls& calls = sys::systemCalls());

  const SavedScan* saved() const override { return saved_ ? &*saved_ : nullptr; }
  void begun(const Beginning& beginning) override;
  void settled(const Matches& matches, const std::vector<TimeLine>& lines, const Standing& standing) override;

  /// Writes what has not been written. What could not be; the scan itself does not mind.
  tl::expected<void, ResumeProblem> finish();

 private:
  ResumeFile(const std::string& path, sys::FileCalls& calls, Clock::duration pause)
      : path_(path), calls_(&calls), pause_(pause) {}
  std::optional<ResumeProblem> open(const ResumeSubject& subject);
  std::optional<ResumeProblem> goOn(const ResumeSubject& subject, movie::ByteView bytes);
  void append(const movie::Bytes& bytes);
  void writePending();

  std::string path_;
  sys::FileCalls* calls_;
  Clock::duration pause_;
  sys::Descriptor file_;
  std::uint64_t end_ = 0;  ///< of what is whole
  std::optional<SavedScan> saved_;
  std::optional<int> failure_;  ///< an errno

  std::size_t writtenFrames_ = 0, writtenLines_ = 0;
  std::vector<FrameMatch> pendingFrames_;
  std::vector<TimeLine> pendingLines_;
  std::optional<Standing> pendingStanding_;
  Clock::time_point written_;
};

}  // namespace scan
