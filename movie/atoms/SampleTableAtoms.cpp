#include "movie/atoms/SampleTableAtoms.h"

#include <algorithm>

namespace movie {

namespace {

constexpr std::size_t sizesAt = 12;  // version, flags, size or field size, count

std::uint32_t usableDuration(std::uint32_t duration) {
  constexpr std::uint32_t smallNegative = 0xFFFFFFFF - 480'000;
  return duration > smallNegative ? 1 : duration;
}

/// Walks ctts beside stts.
class OffsetCursor {
 public:
  explicit OffsetCursor(const std::optional<ByteView>& body) : rows_(body, 8) { settle(); }
  std::int32_t offset() const { return row_ < rows_.count() ? static_cast<std::int32_t>(rows_.at(row_, 1)) : 0; }
  /// How many of `wanted` samples share the present offset.
  std::uint64_t reach(std::uint64_t wanted) const {
    return row_ < rows_.count() ? std::min<std::uint64_t>(wanted, left_) : wanted;
  }
  void advance(std::uint64_t samples) {
    if (row_ >= rows_.count()) return;
    left_ -= samples;
    if (left_ != 0) return;
    ++row_;
    settle();
  }

 private:
  void settle() {
    while (row_ < rows_.count() && (left_ = rows_.at(row_)) == 0) ++row_;
  }
  TableRows rows_;
  std::size_t row_ = 0;
  std::uint64_t left_ = 0;
};

void appendSync(std::vector<SampleRange>& ranges, const TableRows& rows) {
  for (std::size_t i = 0; i < rows.count(); ++i) {
    if (const std::uint32_t number = rows.at(i); number != 0) appendRange(ranges, {number - 1U, 1});
  }
}

}  // namespace

TableRows::TableRows(const std::optional<ByteView>& body, std::size_t rowSize) : rowSize_(rowSize) {
  constexpr std::size_t head = 8;
  if (!body || body->size() < head) return;
  rows_ = body->subspan(head);
  count_ = std::min<std::size_t>(read32(*body, 4), rows_.size() / rowSize);
}

SampleTableAtoms SampleTableAtoms::among(ByteView bytes, const AtomList& children) {
  SampleTableAtoms tables;
  const auto body = [&](const char(&type)[5]) -> std::optional<ByteView> {
    const auto atom = firstAtom(children, fourCC(type));
    if (!atom) return std::nullopt;
    return bodyOf(bytes, *atom);
  };
  tables.timeToSample = body("stts");
  tables.compositionOffset = body("ctts");
  tables.syncSample = body("stss");
  tables.partialSync = body("stps");
  tables.sampleSize = body("stsz");
  tables.compactSizes = !tables.sampleSize;
  if (tables.compactSizes) tables.sampleSize = body("stz2");
  tables.sampleToChunk = body("stsc");
  tables.chunkOffset = body("stco");
  tables.wideOffsets = !tables.chunkOffset;
  if (tables.wideOffsets) tables.chunkOffset = body("co64");
  return tables;
}

std::uint64_t SampleTableAtoms::sampleCount() const {
  if (sampleSize && sampleSize->size() >= sizesAt) {
    const std::uint64_t count = read32(*sampleSize, 8);
    const std::uint64_t bits = (sampleSize->size() - sizesAt) * 8;
    if (compactSizes) {
      const std::uint64_t fieldBits = (*sampleSize)[7];
      return fieldBits == 4 || fieldBits == 8 || fieldBits == 16 ? std::min(count, bits / fieldBits) : 0;
    }
    return read32(*sampleSize, 4) != 0 ? count : std::min(count, bits / 32);
  }
  const TableRows rows(timeToSample, 8);
  std::uint64_t count = 0;
  for (std::size_t i = 0; i < rows.count(); ++i) count += rows.at(i);
  return count;
}

std::vector<TimeRun> SampleTableAtoms::timeRuns() const {
  std::vector<TimeRun> runs;
  const TableRows rows(timeToSample, 8);
  OffsetCursor offsets(compositionOffset);
  std::uint64_t left = sampleCount();
  for (std::size_t i = 0; i < rows.count() && left > 0; ++i) {
    const bool last = i + 1 == rows.count();
    std::uint64_t here = last ? left : std::min<std::uint64_t>(left, rows.at(i));
    left -= here;
    while (here > 0) {
      const std::uint64_t count = offsets.reach(here);
      appendRun(runs, {count, usableDuration(rows.at(i, 1)), offsets.offset()});
      offsets.advance(count);
      here -= count;
    }
  }
  return runs;
}

std::optional<std::vector<SampleRange>> SampleTableAtoms::syncSamples() const {
  if (!syncSample) return std::nullopt;
  std::vector<SampleRange> ranges;
  appendSync(ranges, TableRows(syncSample, 4));
  appendSync(ranges, TableRows(partialSync, 4));
  return ranges;
}

std::optional<std::uint32_t> SampleTableAtoms::commonSize() const {
  if (!sampleSize || sampleSize->size() < sizesAt) return std::nullopt;
  return compactSizes ? 0 : read32(*sampleSize, 4);
}

std::optional<std::uint64_t> SampleTableAtoms::sizeOf(std::uint64_t sample) const {
  const auto common = commonSize();
  if (!common || sample >= sampleCount()) return std::nullopt;
  if (*common != 0) return *common;
  const auto index = static_cast<std::size_t>(sample);
  if (!compactSizes) return read32(*sampleSize, sizesAt + 4 * index);
  const unsigned fieldBits = (*sampleSize)[7];
  if (fieldBits == 16) return read16(*sampleSize, sizesAt + 2 * index);
  if (fieldBits == 8) return (*sampleSize)[sizesAt + index];
  const unsigned pair = (*sampleSize)[sizesAt + index / 2];
  return index % 2 == 0 ? pair >> 4 : pair & 15;
}

std::uint64_t SampleTableAtoms::chunkCount() const {
  return TableRows(chunkOffset, wideOffsets ? 8 : 4).count();
}

std::optional<std::uint64_t> SampleTableAtoms::chunkOffsetOf(std::uint64_t chunk) const {
  const TableRows rows(chunkOffset, wideOffsets ? 8 : 4);
  if (chunk >= rows.count()) return std::nullopt;
  const auto row = static_cast<std::size_t>(chunk);
  if (!wideOffsets) return rows.at(row);
  return (static_cast<std::uint64_t>(rows.at(row)) << 32) | rows.at(row, 1);
}

/// The row of stsc that a sample falls under.
struct SampleTableAtoms::ChunkRun {
  std::uint64_t firstChunk = 0;  ///< 0-based
  std::uint64_t perChunk = 0;
  std::uint64_t firstSample = 0;
  DescriptionRun description;
};

std::optional<SampleTableAtoms::ChunkRun> SampleTableAtoms::chunkRunOf(std::uint64_t sample) const {
  const TableRows rows(sampleToChunk, 12);
  DescriptionRun description;
  const std::uint64_t chunks = chunkCount();
  std::uint64_t before = 0;  // samples in the rows that lie behind
  for (std::size_t i = 0; i < rows.count(); ++i) {
    const std::uint64_t first = rows.at(i);  // 1-based
    const std::uint64_t next = i + 1 < rows.count() ? rows.at(i + 1) : chunks + 1;
    const std::uint64_t perChunk = rows.at(i, 1);
    if (first == 0 || next <= first || perChunk == 0) continue;
    const std::size_t here = descriptionIndex(rows.at(i, 2), descriptionCount);
    if (here != description.description) description = {before, here};
    if ((sample - before) / perChunk < next - first) return ChunkRun{first - 1, perChunk, before, description};
    before += (next - first) * perChunk;
  }
  return std::nullopt;
}

std::optional<DescriptionRun> SampleTableAtoms::descriptionRunOf(std::uint64_t sample) const {
  const auto run = chunkRunOf(sample);
  return run ? std::optional(run->description) : std::nullopt;
}

std::optional<SampleLocation> SampleTableAtoms::locationOf(std::uint64_t sample) const {
  const auto size = sizeOf(sample);
  const auto run = size ? chunkRunOf(sample) : std::nullopt;
  if (!run) return std::nullopt;
  const std::uint64_t into = sample - run->firstSample;
  const auto base = chunkOffsetOf(run->firstChunk + into / run->perChunk);
  if (!base) return std::nullopt;
  const std::uint64_t earlier = into % run->perChunk, first = sample - earlier;
  SampleLocation location{
      *base, *size, run->description.description, {first, std::min(run->perChunk, sampleCount() - first), *base}};
  if (commonSize() != 0U) {
    location.offset += earlier * *size;
  } else {
    for (std::uint64_t other = first; other < sample; ++other) location.offset += sizeOf(other).value_or(0);
  }
  return location;
}

}  // namespace movie
