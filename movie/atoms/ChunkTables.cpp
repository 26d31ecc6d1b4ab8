#include "movie/atoms/ChunkTables.h"

#include <algorithm>
#include <utility>

#include "movie/atoms/AtomTypes.h"

namespace movie {

namespace {

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

TrackChunks::TrackChunks(const TrackAtoms& track)
    : tables_(track.tables), elsewhere_(track.elsewhere), sampleCount_(track.tables.sampleCount()) {
  if (track.info.mediaType != soundMedia) return;
  for (const Bytes& description : track.info.sampleDescriptions) packings_.push_back(packingOf(description));
}

const DataReference* TrackChunks::externalReference(std::size_t description) const {
  return description < elsewhere_.size() && elsewhere_[description] ? &*elsewhere_[description] : nullptr;
}

std::uint64_t TrackChunks::samplesSize(std::uint64_t first, std::uint64_t count, std::size_t description) const {
  const auto common = tables_.commonSize();
  if (!common) return 0;
  if (*common == 1 && description < packings_.size()) {
    const SoundPacking& packing = packings_[description];
    return (count + packing.samplesPerPacket - 1) / packing.samplesPerPacket * packing.bytesPerPacket;
  }
  if (*common != 0) return *common * count;
  std::uint64_t total = 0;
  for (std::uint64_t sample = first; sample < first + count; ++sample) total += tables_.sizeOf(sample).value_or(0);
  return total;
}

Result<void> TrackChunks::visit(const std::function<Result<void>(const Chunk&)>& visit) const {
  const TableRows rows(tables_.sampleToChunk, 12);  // first chunk, samples in a chunk, description, counted from 1
  for (std::size_t i = 0; i < rows.count(); ++i) {
    if (rows.at(i) >= (i == 0 ? 1U : rows.at(i - 1))) continue;
    return failed({}, Reason::ChunksOutOfOrder, "moov/trak/mdia/minf/stbl/stsc");
  }
  const std::uint64_t count = tables_.chunkCount();
  std::size_t next = 0;  // the first row of a chunk that comes later
  Chunk chunk;
  for (; chunk.index < count; ++chunk.index) {
    while (next < rows.count() && rows.at(next) <= chunk.index + 1) ++next;
    const std::uint32_t samples = next == 0 ? 0 : rows.at(next - 1, 1);
    const std::uint32_t description = next == 0 ? 1 : rows.at(next - 1, 2);
    const std::uint64_t here = std::min<std::uint64_t>(samples, sampleCount_ - chunk.firstSample);
    chunk.offset = tables_.chunkOffsetOf(chunk.index).value_or(0);
    chunk.description = descriptionIndex(description, tables_.descriptionCount);
    chunk.size = samplesSize(chunk.firstSample, here, chunk.description);
    TRY(visit(chunk));
    chunk.firstSample += here;
  }
  return {};
}

}  // namespace movie
