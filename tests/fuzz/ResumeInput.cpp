#include <cmath>
#include <string>

#include "scan/resume/ResumeBytes.h"
#include "tests/fuzz/FuzzInputs.h"

namespace fuzz {
namespace {

/// Groups of the lengths that stand there, with the right sums: what made-up bytes hardly ever have.
Bytes withRightSums(ByteView input) {
  constexpr std::size_t head = 12;
  const std::size_t marked = std::min(input.size(), scan::resumeMark.size());
  Bytes result(scan::resumeMark.begin(), scan::resumeMark.end());
  ByteView left = input.subspan(marked);
  while (left.size() > head) {
    const std::size_t length = std::min<std::size_t>(movie::read32(left, 0), left.size() - head);
    movie::append(result, scan::resumeGroupOf(left.subspan(head, length)));
    left = left.subspan(head + length);
  }
  movie::append(result, left);
  return result;
}

bool sameBytes(const std::vector<scan::FrameMatch>& one, const std::vector<scan::FrameMatch>& other) {
  return scan::framesGroup(one, {}, {}) == scan::framesGroup(other, {}, {});
}

/// What would be written of it reads as the same, and can be gone on with.
std::string tryContent(ByteView bytes) {
  const auto content = scan::resumeContentOf(bytes);
  if (!content) return {};
  if (content->whole > bytes.size()) return "more is whole than is there";
  if (!content->subject) return content->saved ? "frames of no scan" : "";
  Bytes written(scan::resumeMark.begin(), scan::resumeMark.end());
  movie::append(written, scan::subjectGroup(*content->subject));
  if (content->saved) {
    const scan::SavedScan& saved = *content->saved;
    if (saved.beginning.lines.empty() || saved.lines.size() < saved.beginning.lines.size()) return "lines are missing";
    if (saved.frames.size() > content->subject->frames()) return "more frames than the scan has";
    movie::append(written, scan::beginningGroup(saved.beginning));
    const std::span<const scan::TimeLine> further = std::span(saved.lines).subspan(saved.beginning.lines.size());
    movie::append(written, scan::framesGroup(saved.frames, further, saved.standing));
  }
  const auto again = scan::resumeContentOf(written);
  if (!again || again->subject != content->subject) return "what was written is of another scan";
  if (again->saved.has_value() != content->saved.has_value()) return "what was written cannot be gone on with";
  if (again->saved && !sameBytes(again->saved->frames, content->saved->frames)) return "frames are others";
  if (again->saved && again->saved->lines != content->saved->lines) return "lines are others";
  // Where no frames were kept, nobody stands anywhere.
  const bool stands = content->saved && !content->saved->frames.empty();
  return stands && again->whole != written.size() ? "what was written is not whole" : "";
}

}  // namespace

std::string tryResume(ByteView input) {
  const std::string asItIs = tryContent(input);
  return asItIs.empty() ? tryContent(withRightSums(input)) : asItIs;
}

}  // namespace fuzz
