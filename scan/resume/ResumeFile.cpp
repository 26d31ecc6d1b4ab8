#include "scan/resume/ResumeFile.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "system/FileBytes.h"

namespace scan {
namespace {

ResumeProblem refusedBy(int code) {
  return {ResumeProblem::What::Unusable, code};
}

ResumeProblem problemOf(ResumeFault fault) {
  return {fault == ResumeFault::Foreign ? ResumeProblem::What::Foreign : ResumeProblem::What::OtherVersion, 0};
}

}  // namespace

tl::expected<ResumeFile, ResumeProblem> ResumeFile::at(const std::string& path, const ResumeSubject& subject,
                                                       Clock::duration pause, sys::FileCalls& calls) {
  ResumeFile file(path, calls, pause);
  if (const auto problem = file.open(subject)) return tl::unexpected(*problem);
  return file;
}

std::optional<ResumeProblem> ResumeFile::open(const ResumeSubject& subject) {
  constexpr mode_t readable = 0666;
  constexpr off_t mostBytes = 1 << 30;
  const int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;  // what is no file is not waited for
  file_ =
      sys::Descriptor(sys::untilUninterrupted([&] { return calls_->open(AT_FDCWD, path_.c_str(), flags, readable); }));
  if (!file_.isOpen() && errno == EISDIR) return ResumeProblem{ResumeProblem::What::NoFile, 0};
  if (!file_.isOpen()) return refusedBy(errno);
  const sys::FileRef file{file_.get(), path_};
  const auto status = sys::statusOf(file, *calls_);
  if (!status) return refusedBy(status.error().code);
  if (!S_ISREG(status->st_mode)) return ResumeProblem{ResumeProblem::What::NoFile, 0};
  if (sys::untilUninterrupted([&] { return calls_->lock(file_.get()); }) != 0) {
    if (errno == EAGAIN || errno == EACCES) return ResumeProblem{ResumeProblem::What::InUse, 0};
    return refusedBy(errno);
  }
  // Only now: whoever had the lock may have written until then.
  const auto size = sys::statusOf(file, *calls_);
  if (!size) return refusedBy(size.error().code);
  if (size->st_size > mostBytes) return ResumeProblem{ResumeProblem::What::Foreign, 0};
  movie::Bytes bytes(static_cast<std::size_t>(size->st_size));
  const auto read = sys::readAt(file, 0, bytes, *calls_);
  if (!read) return refusedBy(read.error().code);
  return goOn(subject, movie::ByteView(bytes).first(*read));
}

/// What is there stays, as far as it is whole.
std::optional<ResumeProblem> ResumeFile::goOn(const ResumeSubject& subject, movie::ByteView bytes) {
  auto content = resumeContentOf(bytes);
  if (!content) return problemOf(content.error());
  if (content->subject && !(*content->subject == subject)) return ResumeProblem{ResumeProblem::What::OtherScan, 0};
  movie::Bytes head(resumeMark.begin(), resumeMark.end());
  movie::append(head, subjectGroup(subject));
  // What is no whole head yet was begun by a scan of these movies, or is somebody else's.
  const bool isBegun = bytes.size() < head.size() && std::equal(bytes.begin(), bytes.end(), head.begin());
  if (!content->subject && !isBegun) return ResumeProblem{ResumeProblem::What::Foreign, 0};
  end_ = content->subject ? content->whole : 0;
  if (bytes.size() > end_) {
    if (sys::untilUninterrupted([&] { return calls_->ftruncate(file_.get(), static_cast<off_t>(end_)); }) != 0) {
      return refusedBy(errno);
    }
  }
  if (!content->subject) append(head);
  saved_ = std::move(content->saved);
  if (saved_) writtenFrames_ = saved_->frames.size(), writtenLines_ = saved_->lines.size();
  if (failure_) return refusedBy(*failure_);
  return std::nullopt;
}

/// What was written in part is cut off when the file is read.
void ResumeFile::append(const movie::Bytes& bytes) {
  if (failure_) return;
  const auto written = sys::writeAt({file_.get(), path_}, end_, bytes, *calls_);
  if (!written) {
    failure_ = written.error().code;
    return;
  }
  if (sys::untilUninterrupted([&] { return calls_->fsync(file_.get()); }) != 0) {
    failure_ = errno;
    return;
  }
  end_ += bytes.size();
  written_ = Clock::now();
}

void ResumeFile::begun(const Beginning& beginning) {
  append(beginningGroup(beginning));
  writtenLines_ = beginning.lines.size();
}

void ResumeFile::settled(const Matches& matches, const std::vector<TimeLine>& lines, const Standing& standing) {
  const auto added = [](const auto& all, std::size_t known) {
    return all.begin() + static_cast<std::ptrdiff_t>(std::min(all.size(), known));
  };
  pendingFrames_.insert(pendingFrames_.end(), added(matches.frames, writtenFrames_ + pendingFrames_.size()),
                        matches.frames.end());
  pendingLines_.insert(pendingLines_.end(), added(lines, writtenLines_ + pendingLines_.size()), lines.end());
  pendingStanding_ = standing;
  if (Clock::now() - written_ >= pause_) writePending();
}

void ResumeFile::writePending() {
  if (!pendingStanding_ || pendingFrames_.empty()) return;
  append(framesGroup(pendingFrames_, pendingLines_, *pendingStanding_));
  writtenFrames_ += pendingFrames_.size();
  writtenLines_ += pendingLines_.size();
  pendingFrames_.clear();
  pendingLines_.clear();
  pendingStanding_.reset();
}

tl::expected<void, ResumeProblem> ResumeFile::finish() {
  writePending();
  if (failure_) return tl::unexpected(refusedBy(*failure_));
  return {};
}

}  // namespace scan
