#include "tests/support/AtomBuilder.h"

#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>
#include <zlib.h>

namespace movie::test {

AtomBuilder& AtomBuilder::u8(unsigned value) {
  bytes_.push_back(static_cast<std::uint8_t>(value));
  return *this;
}

AtomBuilder& AtomBuilder::u16(unsigned value) {
  return u8(value >> 8 & 0xFF).u8(value & 0xFF);
}
AtomBuilder& AtomBuilder::u32(std::uint32_t value) {
  return u16(value >> 16).u16(value & 0xFFFF);
}
AtomBuilder& AtomBuilder::u64(std::uint64_t value) {
  return u32(static_cast<std::uint32_t>(value >> 32)).u32(static_cast<std::uint32_t>(value));
}

AtomBuilder& AtomBuilder::code(std::string_view fourCharacters) {
  bytes_.insert(bytes_.end(), fourCharacters.begin(), fourCharacters.end());
  return *this;
}

AtomBuilder& AtomBuilder::zeros(std::size_t count) {
  bytes_.resize(bytes_.size() + count);
  return *this;
}

AtomBuilder& AtomBuilder::bytes(ByteView more) {
  bytes_.insert(bytes_.end(), more.begin(), more.end());
  return *this;
}

Bytes AtomBuilder::build() const {
  Bytes atom = bytes_;
  write32(atom, 0, static_cast<std::uint32_t>(atom.size()));
  return atom;
}

Bytes joined(const std::vector<Bytes>& parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

Bytes atomOf(std::string_view type, const std::vector<Bytes>& children) {
  return AtomBuilder(type).bytes(joined(children)).build();
}

Bytes ImageEntry::build() const {
  AtomBuilder atom(codec);
  atom.zeros(6).u16(dataReference).u16(version).zeros(14).u16(width).u16(height).u32(72 << 16).u32(72 << 16);
  atom.u32(0).u16(1).zeros(32).u16(depth).u16(colorTableId).bytes(colorTable);
  return atom.bytes(joined(extensions)).bytes(rest).build();
}

Bytes gamaExtension(std::int32_t fixed) {
  return AtomBuilder("gama").i32(fixed).build();
}

Bytes nclcExtension(unsigned primaries, unsigned transfer, unsigned matrix) {
  return AtomBuilder("colr").code("nclc").u16(primaries).u16(transfer).u16(matrix).build();
}

Bytes nclxExtension(unsigned primaries, unsigned transfer, unsigned matrix, unsigned rangeByte) {
  return AtomBuilder("colr").code("nclx").u16(primaries).u16(transfer).u16(matrix).u8(rangeByte).build();
}

Bytes profileExtension(std::string_view colorType, ByteView profile) {
  return AtomBuilder("colr").code(colorType).bytes(profile).build();
}

Bytes clapExtension(const std::array<std::int32_t, 8>& fields) {
  AtomBuilder atom("clap");
  for (const std::int32_t field : fields) atom.i32(field);
  return atom.build();
}

Bytes timecodeEntry(std::uint32_t flags, std::int32_t timeScale, std::int32_t frameDuration, unsigned numberOfFrames) {
  AtomBuilder atom("tmcd");
  return atom.zeros(6).u16(1).u32(0).u32(flags).i32(timeScale).i32(frameDuration).u8(numberOfFrames).u8(0).build();
}

void TrackSpec::add(std::vector<Bytes>& parts, const std::string& type, const Bytes& atom) const {
  if (without.count(type) == 0) parts.push_back(atom);
}

Bytes TrackSpec::trackHeader() const {
  const bool wide = version == 1;
  AtomBuilder atom("tkhd");
  atom.versionAndFlags(version, flags).number(0, wide).number(0, wide).u32(id).u32(0).number(duration, wide);
  atom.zeros(16);
  for (const std::int32_t field : matrix) atom.i32(field);
  return atom.u32(width).u32(height).build();
}

Bytes TrackSpec::editList() const {
  AtomBuilder atom("elst");
  atom.versionAndFlags(version).u32(static_cast<std::uint32_t>(edits.size()));
  for (const EditListEntry& edit : edits) {
    atom.number(edit.segmentDuration, version == 1).number(static_cast<std::uint64_t>(edit.mediaTime), version == 1);
    atom.i32(edit.mediaRate);
  }
  return atomOf("edts", {atom.build()});
}

Bytes TrackSpec::sampleTable() const {
  std::vector<Bytes> parts;
  const auto count = [](std::size_t number) { return static_cast<std::uint32_t>(number); };
  AtomBuilder stsd("stsd");
  add(parts, "stsd", stsd.u32(0).u32(entryCount.value_or(count(entries.size()))).bytes(joined(entries)).build());
  AtomBuilder stts("stts");
  stts.u32(0).u32(count(durations.size()));
  for (const auto& [samples, length] : durations) stts.u32(samples).u32(length);
  add(parts, "stts", stts.build());
  if (!offsets.empty()) {
    AtomBuilder ctts("ctts");
    ctts.versionAndFlags(offsetsVersion).u32(count(offsets.size()));
    for (const auto& [samples, offset] : offsets) ctts.u32(samples).i32(offset);
    add(parts, "ctts", ctts.build());
  }
  const auto numbers = [&](const char* type, const std::optional<std::vector<std::uint32_t>>& list) {
    if (!list) return;
    AtomBuilder atom(type);
    atom.u32(0).u32(count(list->size()));
    for (const std::uint32_t number : *list) atom.u32(number);
    add(parts, type, atom.build());
  };
  numbers("stss", syncSamples);
  numbers("stps", partialSyncSamples);
  AtomBuilder stsz("stsz");
  stsz.u32(0).u32(commonSize).u32(commonSize != 0 ? sampleCount : count(sizes.size()));
  if (commonSize == 0) {
    for (const std::uint32_t size : sizes) stsz.u32(size);
  }
  add(parts, "stsz", stsz.build());
  AtomBuilder stsc("stsc");
  stsc.u32(0).u32(count(chunks.size()));
  for (const auto& row : chunks) stsc.u32(row[0]).u32(row[1]).u32(row[2]);
  add(parts, "stsc", stsc.build());
  AtomBuilder stco(wideOffsets ? "co64" : "stco");
  stco.u32(0).u32(count(chunkOffsets.size()));
  for (const std::uint64_t offset : chunkOffsets) stco.number(offset, wideOffsets);
  add(parts, "stco", stco.build());
  return atomOf("stbl", parts);
}

Bytes TrackSpec::media() const {
  const bool wide = version == 1;
  AtomBuilder header("mdhd");
  header.versionAndFlags(version).number(0, wide).number(0, wide).u32(timeScale).number(mediaDuration, wide).u32(0);
  AtomBuilder references("dref");
  references.u32(0).u32(static_cast<std::uint32_t>(dataReferences.size())).bytes(joined(dataReferences));
  std::vector<Bytes> information;
  add(information, "dinf", atomOf("dinf", {references.build()}));
  add(information, "stbl", sampleTable());
  std::vector<Bytes> parts;
  add(parts, "mdhd", header.build());
  add(parts, "hdlr", AtomBuilder("hdlr").u32(0).code("mhlr").code(mediaType).zeros(13).build());
  add(parts, "minf", atomOf("minf", information));
  return atomOf("mdia", parts);
}

Bytes TrackSpec::build() const {
  std::vector<Bytes> parts;
  add(parts, "tkhd", trackHeader());
  if (!edits.empty()) add(parts, "edts", editList());
  add(parts, "mdia", media());
  return atomOf("trak", parts);
}

Bytes MovieSpec::build() const {
  const bool wide = version == 1;
  AtomBuilder header("mvhd");
  header.versionAndFlags(version).number(0, wide).number(0, wide).u32(timeScale).number(duration, wide).zeros(80);
  std::vector<Bytes> parts{header.build()};
  for (const TrackSpec& track : tracks) parts.push_back(track.build());
  parts.insert(parts.end(), more.begin(), more.end());
  return atomOf("moov", parts);
}

ImageEntry colouredEntry() {
  ImageEntry entry;
  entry.extensions = {gamaExtension(0x20000), nclcExtension(1, 1, 1), profileExtension("prof", Bytes(40, 1)),
                      clapExtension({1900, 1, 1000, 1, 0, 1, 0, 1})};
  entry.rest = Bytes(4, 0);
  return entry;
}

MovieSpec richMovie() {
  MovieSpec movie;
  TrackSpec& video = movie.tracks[0];
  video.entries = {colouredEntry().build(), ImageEntry().build()};
  video.durations = {{2, 1}, {1, 1}};
  video.offsets = {{1, 1}, {1, 2}, {1, -1}};
  video.syncSamples = {{1}};
  video.partialSyncSamples = {{3}};
  TrackSpec timecode;
  timecode.id = 2;
  timecode.mediaType = "tmcd";
  timecode.entries = {timecodeEntry(1, 30000, 1001, 30)};
  timecode.commonSize = 4;
  timecode.sampleCount = 1;
  movie.tracks.push_back(timecode);
  return movie;
}

Bytes fileType(std::string_view majorBrand) {
  return AtomBuilder("ftyp").code(majorBrand).u32(0).code(majorBrand).build();
}

Bytes typedMediaData(std::string_view majorBrand, std::size_t size) {
  Bytes data(size);
  for (std::size_t i = 0; i < size; ++i) data[i] = static_cast<std::uint8_t>(i);
  return joined({fileType(majorBrand), AtomBuilder("mdat").bytes(data).build()});
}

Bytes compressedMovie(const Bytes& moov, std::optional<std::uint32_t> declaredSize) {
  uLongf size = compressBound(static_cast<uLong>(moov.size()));
  Bytes deflated(size);
  if (compress(deflated.data(), &size, moov.data(), static_cast<uLong>(moov.size())) != Z_OK) {
    throw std::runtime_error("cannot deflate");
  }
  deflated.resize(size);
  AtomBuilder data("cmvd");
  data.u32(declaredSize.value_or(static_cast<std::uint32_t>(moov.size()))).bytes(deflated);
  return atomOf("moov", {atomOf("cmov", {AtomBuilder("dcom").code("zlib").build(), data.build()})});
}

Bytes movieExtends(std::uint32_t trackId, std::uint32_t duration, std::uint32_t size, std::uint32_t flags) {
  return atomOf("mvex", {AtomBuilder("trex").u32(0).u32(trackId).u32(1).u32(duration).u32(size).u32(flags).build()});
}

Bytes FragmentSpec::build() const {
  AtomBuilder header("tfhd");
  header.versionAndFlags(0, headerFlags).u32(trackId);
  for (const std::uint32_t field : headerFields) header.u32(field);
  AtomBuilder run("trun");
  run.versionAndFlags(0, runFlags).u32(sampleCount.value_or(static_cast<std::uint32_t>(samples.size())));
  if ((runFlags & 0x1) != 0) run.i32(dataOffset);
  if ((runFlags & 0x4) != 0) run.u32(firstFlags);
  for (const Sample& sample : samples) {
    if ((runFlags & 0x100) != 0) run.u32(sample.duration);
    if ((runFlags & 0x200) != 0) run.u32(sample.size);
    if ((runFlags & 0x400) != 0) run.u32(sample.flags);
    if ((runFlags & 0x800) != 0) run.i32(sample.offset);
  }
  std::vector<Bytes> parts{header.build()};
  if (decodeTime) {
    AtomBuilder time("tfdt");
    parts.push_back(time.versionAndFlags(decodeTimeVersion).number(*decodeTime, decodeTimeVersion == 1).build());
  }
  parts.push_back(run.build());
  return atomOf("moof", {AtomBuilder("mfhd").u32(0).u32(1).build(), atomOf("traf", parts)});
}

FragmentSpec richFragment() {
  FragmentSpec fragment;
  fragment.decodeTime = 3;
  fragment.runFlags = 0xF05;
  fragment.headerFlags = 0x2003A;
  fragment.headerFields = {1, 2, 3, 4};
  fragment.samples = {{1, 10, 0, 2}, {1, 10, 0x10000, 0}, {1, 10, 0x10000, -1}};
  return fragment;
}

TemporaryFile::TemporaryFile(const Bytes& content, const std::string& extension) {
  path_ = (std::filesystem::temp_directory_path() / "lumacheck-XXXXXX").string() + extension;
  const int descriptor = ::mkstemps(path_.data(), static_cast<int>(extension.size()));
  if (descriptor < 0) throw std::runtime_error("no temporary file");
  std::size_t done = 0;
  while (done < content.size()) {
    const ssize_t wrote = ::write(descriptor, content.data() + done, content.size() - done);
    if (wrote <= 0) break;
    done += static_cast<std::size_t>(wrote);
  }
  ::close(descriptor);
  if (done != content.size()) throw std::runtime_error("cannot write " + path_);
}

TemporaryFile::~TemporaryFile() {
  ::unlink(path_.c_str());
}

void TemporaryFile::resize(std::uint64_t size) const {
  std::filesystem::resize_file(path_, size);
}

}  // namespace movie::test
