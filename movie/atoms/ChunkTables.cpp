#include "movie/atoms/ChunkTables.h"

#include <algorithm>
#include <utility>

#include "movie/atoms/AtomTypes.h"

namespace movie {

namespace {

constexpr std::size_t tableHead = 8;   // version, flags, count
constexpr std::size_t sizesHead = 12;  // version, flags, common size, count
constexpr std::size_t referenceAt = 14;

std::size_t rowsIn(const std::optional<ByteView>& body, std::size_t rowSize) {
  if (!body || body->size() < tableHead) return 0;
  return std::min<std::size_t>(read32(*body, 4), (body->size() - tableHead) / rowSize);
}

/// Bytes of one channel's sample in a format that is not packed; 0 for any other format.
unsigned bytesPerValue(FourCC format, unsigned bits) {
  switch (format) {
    case code::raw:
    case code::twos:
    case code::sowt:
    case code::none:
      return (bits + 7) / 8;
    case code::in24:
      return 3;
    case code::in32:
    case code::fl32:
      return 4;
    case code::fl64:
      return 8;
    default:
      return 0;
  }
}

}  // namespace

TrackChunks::SoundPacking TrackChunks::packingOf(ByteView description) {
  constexpr std::size_t versionAt = 16, channelsAt = 24, bitsAt = 26, perPacketAt = 36, bytesPerFrameAt = 44;
  if (description.size() < perPacketAt) return {};
  const std::uint64_t channels = std::max<std::uint64_t>(1, read16(description, channelsAt));
  const FourCC format = read32(description, 4);
  if (read16(description, versionAt) == 1 && description.size() >= bytesPerFrameAt + 8) {
    const SoundPacking packing{read32(description, perPacketAt), read32(description, bytesPerFrameAt)};
    if (packing.samplesPerPacket != 0 && packing.bytesPerPacket != 0) return packing;
  }
  if (const unsigned bytes = bytesPerValue(format, read16(description, bitsAt))) return {1, bytes * channels};
  switch (format) {
    case code::ulaw:
    case code::alaw:
      return {1, channels};
    case code::ima4:
      return {64, 34 * channels};
    case fourCC("MAC3"):
      return {6, 2 * channels};
    case fourCC("MAC6"):
      return {6, channels};
    default:
      return {};
  }
}

TrackChunks::TrackChunks(const TrackAtoms& track, std::vector<DataReference> references)
    : tables_(track.tables), references_(std::move(references)), sampleCount_(track.tables.sampleCount()) {
  for (const Bytes& description : track.info.sampleDescriptions) {
    referenceOf_.push_back(description.size() >= referenceAt + 2 ? read16(description, referenceAt) : 0);
    packings_.push_back(track.info.mediaType == soundMedia ? packingOf(description) : SoundPacking{});
  }
}

std::uint64_t TrackChunks::chunkCount() const {
  return rowsIn(tables_.chunkOffset, tables_.wideOffsets ? 8 : 4);
}

const DataReference* TrackChunks::externalReference(std::size_t description) const {
  const std::size_t number = description < referenceOf_.size() ? referenceOf_[description] : 0;
  if (number == 0 || number > references_.size()) return nullptr;
  const DataReference& reference = references_[number - 1];
  return reference.external ? &reference : nullptr;
}

std::uint64_t TrackChunks::samplesSize(std::uint64_t first, std::uint64_t count, std::size_t description) const {
  if (!tables_.sampleSize || tables_.sampleSize->size() < sizesHead) return 0;
  const ByteView sizes = *tables_.sampleSize;
  std::uint64_t total = 0;
  if (tables_.compactSizes) {
    const unsigned fieldBits = sizes[7];
    for (std::uint64_t sample = first; sample < first + count; ++sample) {
      const auto index = static_cast<std::size_t>(sample);
      const auto pair = [&] { return static_cast<unsigned>(sizes[sizesHead + index / 2]); };
      if (fieldBits == 16) total += read16(sizes, sizesHead + 2 * index);
      if (fieldBits == 8) total += sizes[sizesHead + index];
      if (fieldBits == 4) total += index % 2 == 0 ? pair() >> 4 : pair() & 15;
    }
    return total;
  }
  const std::uint64_t common = read32(sizes, 4);
  if (common == 1 && description < packings_.size()) {
    const SoundPacking& packing = packings_[description];
    return (count + packing.samplesPerPacket - 1) / packing.samplesPerPacket * packing.bytesPerPacket;
  }
  if (common != 0) return common * count;
  for (std::uint64_t sample = first; sample < first + count; ++sample) {
    total += read32(sizes, sizesHead + 4 * static_cast<std::size_t>(sample));
  }
  return total;
}

/// Walks the rows of stsc beside those of stco.
struct TrackChunks::Walk {
  ByteView rows;
  std::size_t rowCount = 0;
  std::size_t row = 0;

  std::uint32_t at(std::size_t index, std::size_t column) const {
    return read32(rows, tableHead + 12 * index + 4 * column);
  }
  bool ascending() const {
    for (std::size_t i = 1; i < rowCount; ++i) {
      if (at(i, 0) < at(i - 1, 0)) return false;
    }
    return rowCount == 0 || at(0, 0) != 0;
  }
  /// How many samples the chunk has, and which description.
  std::pair<std::uint32_t, std::uint32_t> next(std::uint64_t chunk) {
    while (row + 1 < rowCount && at(row + 1, 0) <= chunk + 1) ++row;
    if (row >= rowCount || at(row, 0) > chunk + 1) return {0, 1};
    return {at(row, 1), at(row, 2)};
  }
};

Result<void> TrackChunks::visit(const std::function<Result<void>(const Chunk&)>& visit) const {
  Walk walk{tables_.sampleToChunk.value_or(ByteView{}), rowsIn(tables_.sampleToChunk, 12)};
  if (!walk.ascending()) return failed({}, Reason::ChunksOutOfOrder, "moov/trak/mdia/minf/stbl/stsc");
  const std::uint64_t count = chunkCount();
  Chunk chunk;
  for (; chunk.index < count; ++chunk.index) {
    const auto [samples, description] = walk.next(chunk.index);
    const std::uint64_t here = std::min<std::uint64_t>(samples, sampleCount_ - chunk.firstSample);
    const auto row = static_cast<std::size_t>(chunk.index);
    chunk.offset = tables_.wideOffsets ? read64(*tables_.chunkOffset, tableHead + 8 * row)
                                       : read32(*tables_.chunkOffset, tableHead + 4 * row);
    chunk.description = descriptionIndex(description, tables_.descriptionCount);
    chunk.size = samplesSize(chunk.firstSample, here, chunk.description);
    TRY(visit(chunk));
    chunk.firstSample += here;
  }
  return {};
}

}  // namespace movie
