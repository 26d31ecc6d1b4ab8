#include "scan/resume/ResumeBytes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

// All of it in this file: nothing to link.
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace scan {
namespace {

using movie::Bytes;
using movie::ByteView;

/// Counts up with every change of what is kept, or of how frames are compared.
constexpr std::uint8_t version = 3;
enum class Kind : std::uint8_t { Subject = 1, Beginning = 2, Frames = 3 };
constexpr std::size_t headSize = 12;      // of a group
constexpr std::size_t frameSize = 27;     // as putFrame has it
constexpr std::size_t mostLines = 60000;  // as many as FrameMatch::line counts

// --- Numbers ---------------------------------------------------------------------------------------------------------

class Writer {
 public:
  explicit Writer(Kind kind) { put(static_cast<std::uint8_t>(kind), 1); }

  Writer& put(std::uint64_t value, std::size_t size) {
    for (std::size_t i = size; i-- > 0;) bytes_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    return *this;
  }
  Writer& put(double value) { return put(std::bit_cast<std::uint64_t>(value), 8); }
  Writer& put(float value) { return put(std::bit_cast<std::uint32_t>(value), 4); }
  Writer& put(const TimeLine& line) { return put(line.rate).put(line.offset); }

  Bytes group() const { return resumeGroupOf(bytes_); }

 private:
  Bytes bytes_;
};

/// Reads what a Writer wrote, and notes where it is not what may stand there.
class Reader {
 public:
  explicit Reader(ByteView bytes) : fields_(bytes) {}

  std::uint64_t number(std::size_t size) { return fields_.next(size); }
  std::int64_t integer() { return static_cast<std::int64_t>(number(8)); }
  bool flag() { return number(1) != 0; }
  double real(double least, double most) {
    const double value = std::bit_cast<double>(number(8));
    expect(value >= least && value <= most);  // what is no number is not
    return value;
  }
  float single(float least, float most) {
    const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(number(4)));
    expect(value >= least && value <= most);
    return value;
  }
  TimeLine line() {
    constexpr double mostRate = 1e4, mostSeconds = 1e7;
    const double rate = real(0, mostRate);
    return {rate, real(-mostSeconds, mostSeconds)};
  }
  void expect(bool holds) { holds_ = holds_ && holds; }
  std::size_t left() const { return fields_.left(); }
  bool holds() const { return holds_ && !fields_.isCut(); }

 private:
  movie::Fields fields_;
  bool holds_ = true;
};

// --- What a group holds ----------------------------------------------------------------------------------------------

void putSide(Writer& writer, const ResumeSide& side) {
  writer.put(side.bytes, 8).put(static_cast<std::uint64_t>(side.modified), 8).put(side.frames, 8);
}

ResumeSide sideFrom(Reader& reader) {
  ResumeSide side;
  side.bytes = reader.number(8);
  side.modified = reader.integer();
  side.frames = reader.number(8);
  return side;
}

ResumeSubject subjectFrom(Reader& reader) {
  constexpr std::uint64_t mostFrames = 1'000'000'000;
  ResumeSubject subject{sideFrom(reader), sideFrom(reader)};
  subject.first = reader.number(8);
  subject.end = reader.number(8);
  subject.every = reader.number(8);
  subject.align = reader.flag();
  reader.expect(subject.source.frames <= mostFrames && subject.dest.frames <= mostFrames);
  reader.expect(subject.first < subject.end && subject.end <= subject.dest.frames && subject.every >= 1);
  reader.expect(subject.every <= mostFrames);
  return subject;
}

void putRegion(Writer& writer, const diagnosis::Region& region) {
  writer.put(region.left).put(region.top).put(region.right).put(region.bottom);
}

diagnosis::Region regionFrom(Reader& reader) {
  diagnosis::Region region;
  for (double* each : {&region.left, &region.top, &region.right, &region.bottom}) *each = reader.real(-1, 2);
  reader.expect(region.left < region.right && region.top < region.bottom);
  return region;
}

constexpr double leastExponent = 0.01, mostExponent = 100;

Beginning beginningFrom(Reader& reader) {
  Beginning beginning;
  const std::uint64_t result = reader.number(1);
  reader.expect(result == 0 || result == 1);
  beginning.result = result == 1 ? Beginning::Result::Still : Beginning::Result::Found;
  beginning.isProbed = reader.flag();
  beginning.exponent = reader.real(leastExponent, mostExponent);
  diagnosis::Placement& placement = beginning.placement;
  for (bool* each : {&placement.transposed, &placement.mirroredX, &placement.mirroredY}) *each = reader.flag();
  placement.source = regionFrom(reader);
  placement.dest = regionFrom(reader);
  const std::uint64_t count = reader.number(2);
  reader.expect(count >= 1 && count <= mostLines);
  for (std::uint64_t i = 0; i < count && reader.holds(); ++i) beginning.lines.push_back(reader.line());
  return beginning;
}

void putFrame(Writer& writer, const FrameMatch& match) {
  const unsigned flags = (match.identical ? 1U : 0U) | (match.blended ? 2U : 0U) | (match.flat ? 4U : 0U) |
                         (std::isnan(match.logExponent) ? 8U : 0U);
  writer.put(static_cast<std::uint32_t>(match.source), 4).put(match.line, 2).put(flags, 1).put(match.distance);
  writer.put(std::isnan(match.logExponent) ? 0.0F : match.logExponent);
  writer.put(match.spread).put(match.weight).put(match.level);
}

FrameMatch frameFrom(Reader& reader, const ResumeSubject& subject, std::size_t lines) {
  constexpr float most = 1e9F;
  FrameMatch match;
  match.source = static_cast<std::int32_t>(static_cast<std::uint32_t>(reader.number(4)));
  reader.expect(match.source >= -1 && match.source < static_cast<std::int64_t>(subject.source.frames));
  match.line = static_cast<std::uint16_t>(reader.number(2));
  reader.expect(match.line < lines);
  const std::uint64_t flags = reader.number(1);
  match.identical = (flags & 1) != 0;
  match.blended = (flags & 2) != 0;
  match.flat = (flags & 4) != 0;
  match.distance = reader.single(0, most);
  match.logExponent = reader.single(-100, 100);
  if ((flags & 8) != 0) match.logExponent = std::numeric_limits<float>::quiet_NaN();
  match.spread = reader.single(0, most);
  match.weight = reader.single(0, most);
  match.level = reader.single(-most, most);
  return match;
}

void putStanding(Writer& writer, const Standing& standing) {
  const Bearing& bearing = standing.bearing;
  writer.put(bearing.course.line).put(bearing.course.exponent).put(bearing.line, 2);
  writer.put(static_cast<std::uint64_t>(bearing.centre), 8).put(static_cast<std::uint64_t>(bearing.aside), 1);
  writer.put(bearing.nearer).put(bearing.usual.mean).put(bearing.usual.frames, 1);
  writer.put(bearing.settledBefore, 8);
  const Track::State& state = standing.state;
  writer.put(static_cast<std::uint64_t>(state.source), 8).put(static_cast<std::uint64_t>(state.away), 8);
  writer.put(state.none ? 1U : 0U, 1);
}

Standing standingFrom(Reader& reader, const ResumeSubject& subject, std::size_t lines) {
  const auto most = static_cast<std::int64_t>(subject.source.frames + 1'000'000'000);
  const auto place = [&] {
    const std::int64_t value = reader.integer();
    reader.expect(value >= -most && value <= most);
    return value;
  };
  Standing standing;
  Bearing& bearing = standing.bearing;
  bearing.course.line = reader.line();
  bearing.course.exponent = reader.real(leastExponent, mostExponent);
  bearing.line = static_cast<std::uint16_t>(reader.number(2));
  reader.expect(bearing.line < lines);
  bearing.centre = place();
  bearing.aside = static_cast<int>(reader.number(1));
  constexpr float farthest = 1e6F;
  bearing.nearer = reader.single(0, farthest);
  bearing.usual.mean = reader.single(0, farthest);
  bearing.usual.frames = static_cast<std::uint8_t>(reader.number(1));
  reader.expect(bearing.usual.frames <= UsualDistance::most);
  bearing.settledBefore = reader.number(8);
  reader.expect(bearing.settledBefore <= subject.frames());
  standing.state.source = place();
  standing.state.away = place();
  standing.state.none = reader.flag();
  return standing;
}

/// Adds to what is saved. False, and nothing added, where the group does not fit.
bool addFrames(SavedScan& saved, Reader& reader, const ResumeSubject& subject) {
  const std::uint64_t lines = reader.number(2), frames = reader.number(4);
  reader.expect(lines <= mostLines - std::min(mostLines, saved.lines.size()));
  reader.expect(frames <= subject.frames() - saved.frames.size() && frames * frameSize <= reader.left());
  if (!reader.holds()) return false;
  std::vector<TimeLine> newLines;
  for (std::uint64_t i = 0; i < lines && reader.holds(); ++i) newLines.push_back(reader.line());
  const std::size_t allLines = saved.lines.size() + newLines.size();
  std::vector<FrameMatch> newFrames;
  newFrames.reserve(frames);
  for (std::uint64_t i = 0; i < frames; ++i) newFrames.push_back(frameFrom(reader, subject, allLines));
  const Standing standing = standingFrom(reader, subject, allLines);
  if (!reader.holds() || reader.left() != 0) return false;
  saved.lines.insert(saved.lines.end(), newLines.begin(), newLines.end());
  saved.frames.insert(saved.frames.end(), newFrames.begin(), newFrames.end());
  saved.standing = standing;
  return true;
}

/// What the next group holds, where it is whole.
std::optional<ByteView> heldNext(ByteView bytes) {
  if (bytes.size() < headSize) return std::nullopt;
  const std::size_t length = movie::read32(bytes, 0);
  if (length == 0 || length > bytes.size() - headSize) return std::nullopt;
  const ByteView held = bytes.subspan(headSize, length);
  if (XXH3_64bits(held.data(), held.size()) != movie::read64(bytes, 4)) return std::nullopt;
  return held;
}

/// Takes a group in its turn. False where it does not fit there.
bool take(ByteView held, ResumeContent& content) {
  Reader reader(held.subspan(1));
  switch (static_cast<Kind>(held.front())) {
    case Kind::Subject: {
      if (content.subject) return false;
      reader.number(1);
      const ResumeSubject subject = subjectFrom(reader);
      if (!reader.holds() || reader.left() != 0) return false;
      content.subject = subject;
      return true;
    }
    case Kind::Beginning: {
      if (!content.subject || content.saved) return false;
      const Beginning beginning = beginningFrom(reader);
      if (!reader.holds() || reader.left() != 0) return false;
      content.saved = SavedScan{beginning, beginning.lines, {}, {}};
      return true;
    }
    case Kind::Frames:
      return content.saved && addFrames(*content.saved, reader, *content.subject);
  }
  return false;
}

}  // namespace

Bytes resumeGroupOf(ByteView held) {
  Bytes result(headSize + held.size());
  movie::write32(result, 0, static_cast<std::uint32_t>(held.size()));
  movie::write64(result, 4, XXH3_64bits(held.data(), held.size()));
  std::copy(held.begin(), held.end(), result.begin() + headSize);
  return result;
}

Bytes subjectGroup(const ResumeSubject& subject) {
  Writer writer(Kind::Subject);
  writer.put(version, 1);
  putSide(writer, subject.source);
  putSide(writer, subject.dest);
  writer.put(subject.first, 8).put(subject.end, 8).put(subject.every, 8).put(subject.align ? 1U : 0U, 1);
  return writer.group();
}

Bytes beginningGroup(const Beginning& beginning) {
  Writer writer(Kind::Beginning);
  writer.put(beginning.result == Beginning::Result::Still ? 1U : 0U, 1).put(beginning.isProbed ? 1U : 0U, 1);
  writer.put(beginning.exponent);
  const diagnosis::Placement& placement = beginning.placement;
  for (const bool each : {placement.transposed, placement.mirroredX, placement.mirroredY})
    writer.put(each ? 1U : 0U, 1);
  putRegion(writer, placement.source);
  putRegion(writer, placement.dest);
  writer.put(beginning.lines.size(), 2);
  for (const TimeLine& line : beginning.lines) writer.put(line);
  return writer.group();
}

Bytes framesGroup(std::span<const FrameMatch> frames, std::span<const TimeLine> lines, const Standing& standing) {
  Writer writer(Kind::Frames);
  writer.put(lines.size(), 2).put(frames.size(), 4);
  for (const TimeLine& line : lines) writer.put(line);
  for (const FrameMatch& match : frames) putFrame(writer, match);
  putStanding(writer, standing);
  return writer.group();
}

tl::expected<ResumeContent, ResumeFault> resumeContentOf(ByteView bytes) {
  const std::size_t marked = std::min(bytes.size(), resumeMark.size());
  if (!std::equal(resumeMark.begin(), resumeMark.begin() + static_cast<std::ptrdiff_t>(marked), bytes.begin(),
                  [](char one, std::uint8_t other) { return static_cast<std::uint8_t>(one) == other; })) {
    return tl::unexpected(ResumeFault::Foreign);
  }
  ResumeContent content;
  if (bytes.size() < resumeMark.size()) return content;
  content.whole = resumeMark.size();
  while (const auto held = heldNext(bytes.subspan(content.whole))) {
    const bool isFirst = !content.subject;
    if (isFirst && held->size() > 1 && held->front() == static_cast<std::uint8_t>(Kind::Subject) &&
        (*held)[1] != version) {
      return tl::unexpected(ResumeFault::Newer);
    }
    if (!take(*held, content)) break;
    content.whole += headSize + held->size();
  }
  return content;
}

}  // namespace scan
