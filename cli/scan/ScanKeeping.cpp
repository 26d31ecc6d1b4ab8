#include "cli/scan/ScanKeeping.h"

#include <cstring>
#include <utility>

#include <sys/stat.h>

namespace cli {
namespace {

std::string sentenceOn(const scan::ResumeProblem& problem) {
  using What = scan::ResumeProblem::What;
  switch (problem.what) {
    case What::Unusable:
      return std::string("The scan cannot be kept there: ") + std::strerror(problem.code) + ".";
    case What::NoFile:
      return "The scan cannot be kept there: this is no file.";
    case What::Foreign:
      return "This file holds something else than a scan, and is left as it is.";
    case What::OtherVersion:
      return "This scan was kept by another version of Lumacheck: remove it to begin anew.";
    case What::OtherScan:
      return "This is a scan of other movies, of what they were before, or with other options: remove it to begin "
             "anew.";
    case What::InUse:
      return "Another scan is writing to this file.";
  }
  return {};
}

ScanProblem problemWith(const std::string& path, const scan::ResumeProblem& problem) {
  return {path + ": " + sentenceOn(problem), path};
}

scan::ResumeSubject subjectOf(const KeptScan& scan) {
  const auto side = [](const FileState& file, const scan::FrameRow& row) {
    return scan::ResumeSide{file.bytes, file.modified, row.shape().frames};
  };
  const scan::FrameRange range = scan::rangeOf(*scan.rows.dest, scan.asked);
  return {.source = side(scan.source, *scan.rows.source),
          .dest = side(scan.dest, *scan.rows.dest),
          .first = range.first,
          .end = range.end,
          .every = scan.asked.every,
          .align = scan.asked.align};
}

}  // namespace

FileState stateOf(const std::string& path) {
  constexpr std::int64_t nanoseconds = 1'000'000'000;
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return {};
  return {static_cast<std::uint64_t>(status.st_size), status.st_mtim.tv_sec * nanoseconds + status.st_mtim.tv_nsec};
}

tl::expected<ScanKeeping, ScanProblem> ScanKeeping::of(const std::optional<std::string>& path, const KeptScan& scan) {
  ScanKeeping keeping;
  const bool isEmpty = scan.rows.source->shape().frames == 0 || scan.rows.dest->shape().frames == 0;
  if (!path || isEmpty) return keeping;
  auto file = scan::ResumeFile::at(*path, subjectOf(scan));
  if (!file) return tl::unexpected(problemWith(*path, file.error()));
  keeping.path_ = *path;
  keeping.file_ = std::move(*file);
  return keeping;
}

std::optional<ScanProblem> ScanKeeping::finish() {
  if (!file_) return std::nullopt;
  const auto kept = file_->finish();
  if (kept) return std::nullopt;
  return problemWith(path_, kept.error());
}

}  // namespace cli
