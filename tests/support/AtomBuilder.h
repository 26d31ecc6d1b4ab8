#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "movie/atoms/ByteOrder.h"
#include "movie/atoms/TrackInfo.h"

namespace movie::test {

/// Lays down one atom, big-endian, field after field.
class AtomBuilder {
 public:
  explicit AtomBuilder(std::string_view type) { u32(0).code(type); }

  AtomBuilder& u8(unsigned value);
  AtomBuilder& u16(unsigned value);
  AtomBuilder& u32(std::uint32_t value);
  AtomBuilder& u64(std::uint64_t value);
  AtomBuilder& i32(std::int32_t value) { return u32(static_cast<std::uint32_t>(value)); }
  /// 64 bits in a wide table, 32 in a narrow one.
  AtomBuilder& number(std::uint64_t value, bool wide) {
    return wide ? u64(value) : u32(static_cast<std::uint32_t>(value));
  }
  AtomBuilder& code(std::string_view fourCharacters);
  AtomBuilder& zeros(std::size_t count);
  AtomBuilder& bytes(ByteView more);
  AtomBuilder& versionAndFlags(unsigned version, std::uint32_t flags = 0) { return u32((version << 24) | flags); }

  /// The atom with its 32-bit size.
  Bytes build() const;

 private:
  Bytes bytes_;
};

Bytes joined(const std::vector<Bytes>& parts);
Bytes atomOf(std::string_view type, const std::vector<Bytes>& children);

/// A stsd entry of a video track.
struct ImageEntry {
  std::string codec = "apch";
  unsigned version = 0;
  unsigned width = 1920, height = 1080, depth = 24;
  unsigned colorTableId = 0xFFFF;
  Bytes colorTable;  ///< stands between header and extensions
  std::vector<Bytes> extensions;
  Bytes rest;
  unsigned dataReference = 1;

  Bytes build() const;
};

Bytes gamaExtension(std::int32_t fixed);
Bytes nclcExtension(unsigned primaries, unsigned transfer, unsigned matrix);
Bytes nclxExtension(unsigned primaries, unsigned transfer, unsigned matrix, unsigned rangeByte);
Bytes profileExtension(std::string_view colorType, ByteView profile);
/// Width, height, horizontal and vertical offset, each a numerator and a denominator.
Bytes clapExtension(const std::array<std::int32_t, 8>& fields);
Bytes timecodeEntry(std::uint32_t flags, std::int32_t timeScale, std::int32_t frameDuration, unsigned numberOfFrames);

/// One trak. By default a video track of three samples of 10 bytes each, in one chunk at offset 28.
struct TrackSpec {
  std::uint32_t id = 1;
  std::string mediaType = "vide";
  unsigned version = 0;  ///< of tkhd, mdhd and elst
  std::uint32_t flags = 1;
  std::uint64_t duration = 75;
  std::uint32_t timeScale = 25;
  std::uint64_t mediaDuration = 3;
  TransformMatrix matrix = TrackInfo().matrix;
  std::uint32_t width = 1920 << 16, height = 1080 << 16;
  std::vector<EditListEntry> edits;
  std::vector<Bytes> entries{ImageEntry().build()};
  std::optional<std::uint32_t> entryCount;  ///< what stsd claims; the entries' number by default
  std::vector<std::pair<std::uint32_t, std::uint32_t>> durations{{3, 1}};
  unsigned offsetsVersion = 0;
  std::vector<std::pair<std::uint32_t, std::int32_t>> offsets;
  std::optional<std::vector<std::uint32_t>> syncSamples;
  std::optional<std::vector<std::uint32_t>> partialSyncSamples;
  std::uint32_t commonSize = 0;
  std::vector<std::uint32_t> sizes{10, 10, 10};
  std::uint32_t sampleCount = 3;  ///< what stsz says where there is a common size
  std::vector<std::array<std::uint32_t, 3>> chunks{{1, 3, 1}};
  std::vector<std::uint64_t> chunkOffsets{28};
  bool wideOffsets = false;
  std::vector<Bytes> dataReferences{AtomBuilder("url ").versionAndFlags(0, 1).build()};
  std::set<std::string> without;  ///< atoms to leave out

  Bytes build() const;

 private:
  void add(std::vector<Bytes>& parts, const std::string& type, const Bytes& atom) const;
  Bytes trackHeader() const;
  Bytes editList() const;
  Bytes media() const;
  Bytes sampleTable() const;
};

/// A moov with mvhd, the tracks, and anything more.
struct MovieSpec {
  unsigned version = 0;
  std::uint32_t timeScale = 600;
  std::uint64_t duration = 72;
  std::vector<TrackSpec> tracks{TrackSpec{}};
  std::vector<Bytes> more;

  Bytes build() const;
};

/// An entry with all kinds of colour tags.
ImageEntry colouredEntry();
/// With the tables that a video track may have, that entry and a plain one, and a second track, of timecode.
MovieSpec richMovie();

Bytes fileType(std::string_view majorBrand);
/// ftyp of 20 bytes, then a mdat whose body, at offset 28, counts 0, 1, 2 ...
Bytes typedMediaData(std::string_view majorBrand, std::size_t size);

/// `moov`, deflated into a moov/cmov.
Bytes compressedMovie(const Bytes& moov, std::optional<std::uint32_t> declaredSize = std::nullopt);

/// mvex with one trex.
Bytes movieExtends(std::uint32_t trackId, std::uint32_t duration, std::uint32_t size, std::uint32_t flags);

/// A moof with one traf of one trun.
struct FragmentSpec {
  struct Sample {
    std::uint32_t duration = 1, size = 10, flags = 0;
    std::int32_t offset = 0;
  };
  std::uint32_t trackId = 1;
  std::uint32_t headerFlags = 0x20000;  ///< tfhd
  std::vector<std::uint32_t> headerFields;
  std::optional<std::uint64_t> decodeTime;
  unsigned decodeTimeVersion = 1;
  std::uint32_t runFlags = 0x301;  ///< trun: data offset, durations, sizes
  std::int32_t dataOffset = 0;
  std::uint32_t firstFlags = 0;
  std::vector<Sample> samples;
  std::optional<std::uint32_t> sampleCount;  ///< what trun claims

  Bytes build() const;
};

/// With the fields that a fragment may have.
FragmentSpec richFragment();

/// A file in the tests' temporary folder, gone with this object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const Bytes& content, const std::string& extension = ".mov");
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& path() const { return path_; }
  /// Makes the file that long; a longer one gets a hole.
  void resize(std::uint64_t size) const;

 private:
  std::string path_;
};

}  // namespace movie::test
