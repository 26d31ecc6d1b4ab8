#include "cli/scan/ScanBar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <unistd.h>

#include "system/FileBytes.h"

namespace cli {
namespace {

constexpr const char* backToBegin = "\r\x1b[K";

std::string minutes(double seconds) {
  char text[40];
  const auto whole = static_cast<long>(std::ceil(seconds));
  std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
  return text;
}

}  // namespace

std::string barLine(const scan::ScanProgress& progress, double seconds) {
  if (progress.stage == scan::ScanProgress::Stage::Aligning) return "Looking for the place of the one in the other ...";
  constexpr std::size_t width = 24;
  const double share =
      progress.frames > 0 ? static_cast<double>(progress.done) / static_cast<double>(progress.frames) : 1.0;
  const auto full = std::min(width, static_cast<std::size_t>(share * static_cast<double>(width)));
  char text[160];
  // Of what is new: what was known before took no time.
  const auto fresh = static_cast<double>(progress.done - progress.known);
  const double freshShare = progress.done > 0 ? fresh / static_cast<double>(progress.done) : 0;
  const double speed = seconds > 0 ? progress.seconds * freshShare / seconds : 0;
  const double left = fresh > 0 ? seconds * static_cast<double>(progress.frames - progress.done) / fresh : 0;
  std::snprintf(text, sizeof text, "] %3.0f %%  %.1fx  %s left", std::floor(100 * share), speed, minutes(left).c_str());
  std::string line = "[" + std::string(full, '=') + std::string(width - full, ' ') + text;
  if (progress.exponent) {
    std::snprintf(text, sizeof text, "  exponent %.2f", *progress.exponent);
    line += text;
  }
  if (progress.identical > 0) line += "  " + std::to_string(progress.identical) + " identical";
  if (progress.unmatched > 0) line += "  " + std::to_string(progress.unmatched) + " unmatched";
  return line;
}

ScanBar::ScanBar() : isTerminal_(::isatty(STDERR_FILENO) == 1), begin_(Clock::now()) {}

ScanBar::~ScanBar() {
  if (isShown_) sys::writeAll(STDERR_FILENO, backToBegin);
}

void ScanBar::show(const scan::ScanProgress& progress) {
  constexpr auto pause = std::chrono::milliseconds(150);
  const Clock::time_point now = Clock::now();
  if (!isTerminal_ || (isShown_ && now - shown_ < pause)) return;
  sys::writeAll(STDERR_FILENO, backToBegin + barLine(progress, std::chrono::duration<double>(now - begin_).count()));
  isShown_ = true;
  shown_ = now;
}

}  // namespace cli
