#include "movie/decode/ffmpeg/OneSampleMovie.h"

#include <initializer_list>

#include "movie/atoms/AtomTypes.h"
#include "movie/atoms/TrackInfo.h"

namespace movie {
namespace {

void append(Bytes& bytes, ByteView more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

void append32(Bytes& bytes, std::uint32_t value) {
  bytes.resize(bytes.size() + 4);
  write32(bytes, bytes.size() - 4, value);
}

Bytes words(std::initializer_list<std::uint32_t> values) {
  Bytes bytes;
  for (const std::uint32_t value : values) append32(bytes, value);
  return bytes;
}

Bytes atom(FourCC type, std::initializer_list<Bytes> parts) {
  Bytes bytes = words({0, type});
  for (const Bytes& part : parts) append(bytes, part);
  write32(bytes, 0, static_cast<std::uint32_t>(bytes.size()));
  return bytes;
}

constexpr std::uint32_t timeScale = 600;
constexpr std::uint32_t one = 0x10000;
constexpr std::uint32_t lastRow = 0x40000000;

Bytes movieHeader() {
  return atom(code::mvhd, {words({0,   0, 0, timeScale, 1,       one, 0x01000000, 0, 0, one, 0, 0, 0,
                                  one, 0, 0, 0,         lastRow, 0,   0,          0, 0, 0,   0, 2})});
}

Bytes trackHeader() {
  return atom(code::tkhd, {words({1, 0, 0, 1, 0, 1, 0, 0, 0, 0, one, 0, 0, 0, one, 0, 0, 0, lastRow, 0, 0})});
}

Bytes track(const Bytes& description, std::uint32_t sampleOffset) {
  const Bytes table =
      atom(code::stbl, {atom(code::stsd, {words({0, 1}), description}), atom(code::stts, {words({0, 1, 1, 1})}),
                        atom(code::stsc, {words({0, 1, 1, 1, 1})}), atom(code::stsz, {words({0, 1, 1})}),
                        atom(code::stco, {words({0, 1, sampleOffset})})});
  const Bytes handler = atom(code::hdlr, {words({0, code::mhlr, videoMedia, 0, 0, 0}), Bytes(1)});
  const Bytes media = atom(code::mdia, {atom(code::mdhd, {words({0, 0, 0, timeScale, 1, 0})}), handler,
                                        atom(code::minf, {atom(code::vmhd, {words({1, 0, 0})}), table})});
  return atom(code::trak, {trackHeader(), media});
}

}  // namespace

Bytes oneSampleMovie(FourCC majorBrand, Bytes description) {
  if (description.size() < 8) description.resize(8);
  write32(description, 0, static_cast<std::uint32_t>(description.size()));
  Bytes file;
  if (majorBrand != 0) file = atom(code::ftyp, {words({majorBrand, 0, majorBrand})});
  const auto sampleOffset = static_cast<std::uint32_t>(file.size() + 8);
  append(file, atom(code::mdat, {Bytes(1)}));
  append(file, atom(code::moov, {movieHeader(), track(description, sampleOffset)}));
  return file;
}

}  // namespace movie
