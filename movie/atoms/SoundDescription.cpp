#include "movie/atoms/SoundDescription.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <optional>

#include "movie/atoms/AtomReader.h"
#include "movie/atoms/AtomTypes.h"
#include "movie/atoms/ElementaryStream.h"

namespace movie {
namespace {

constexpr std::size_t plainHeader = 36, packetHeader = 52, wideHeader = 72;

/// The body of the first extension of that type, be it beside wave or inside.
std::optional<ByteView> extension(ByteView atoms, FourCC type) {
  const AtomList list = readAtoms(atoms);
  if (const auto found = firstAtom(list, type)) return bodyOf(atoms, *found);
  const auto wave = firstAtom(list, code::wave);
  if (!wave) return std::nullopt;
  const ByteView inside = bodyOf(atoms, *wave);
  const auto found = firstAtom(readAtoms(inside), type);
  return found ? std::optional(bodyOf(inside, *found)) : std::nullopt;
}

void readExtensions(ByteView atoms, SoundDescription& description) {
  if (const auto order = extension(atoms, code::enda); order && order->size() >= 2) {
    description.bigEndian = read16(*order, 0) == 0;
  }
  if (const auto esds = extension(atoms, code::esds)) {
    const ElementaryStream stream = readElementaryStream(*esds);
    description.objectType = stream.objectType;
    description.setup.assign(stream.setup.begin(), stream.setup.end());
  }
  const auto alac = description.codec == code::alac ? extension(atoms, code::alac) : std::nullopt;
  if (!alac) return;
  // The decoder wants the atom as it stands in a file, header included.
  description.setup = atomHeader(code::alac, alac->size());
  append(description.setup, *alac);
}

int wholeRate(double rate) {
  return rate >= 1 && rate <= SoundDescription::highestRate ? static_cast<int>(std::lround(rate)) : 0;
}

unsigned versionOf(ByteView entry) {
  return read16(entry, 16);
}

/// As its field has it: 16.16, or a 64-bit float in version 2. 0 for an entry that is too short or of another version.
double statedRate(ByteView entry) {
  if (entry.size() < plainHeader || versionOf(entry) > 2) return 0;
  if (versionOf(entry) < 2) return read32(entry, 32) / 65536.0;
  if (entry.size() < 48) return 0;
  const auto rate = std::bit_cast<double>(read64(entry, 40));
  return std::isfinite(rate) ? rate : 0;
}

/// Bits from the highest of the first byte on; zeros past the end.
class Bits {
 public:
  explicit Bits(ByteView bytes) : bytes_(bytes) {}

  unsigned take(unsigned count) {
    unsigned value = 0;
    for (; count > 0; --count, ++at_) {
      const unsigned byte = at_ / 8 < bytes_.size() ? bytes_[at_ / 8] : 0;
      value = (value << 1) | ((byte >> (7 - at_ % 8)) & 1U);
    }
    return value;
  }
  bool isCut() const { return at_ > 8 * bytes_.size(); }

 private:
  ByteView bytes_;
  std::size_t at_ = 0;
};

unsigned takeObjectType(Bits& bits) {
  const unsigned type = bits.take(5);
  return type == 31 ? 32 + bits.take(6) : type;
}

unsigned takeRate(Bits& bits) {
  constexpr std::array<unsigned, 13> rates{96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                           22050, 16000, 12000, 11025, 8000,  7350};
  const unsigned index = bits.take(4);
  if (index == 15) return bits.take(24);
  return index < rates.size() ? rates[index] : 0;
}

/// What comes out of an AAC decoder with that setup, which may be double what goes in. 0 where it does not say.
unsigned codedRate(const SoundDescription& description) {
  const std::uint8_t stream = description.objectType;
  if (stream != SoundDescription::mpeg4Audio &&
      (stream < SoundDescription::firstMpeg2Aac || stream > SoundDescription::lastMpeg2Aac)) {
    return 0;
  }
  constexpr unsigned doubled = 5, doubledStereo = 29;  // spectral band replication, with and without parametric stereo
  Bits bits(description.setup);
  const unsigned type = takeObjectType(bits);
  unsigned rate = takeRate(bits);
  if (type == doubled || type == doubledStereo) {
    bits.take(4);  // channels
    rate = takeRate(bits);
  }
  return bits.isCut() ? 0 : rate;
}

}  // namespace

tl::expected<SoundDescription, Clause> readSoundDescription(ByteView entry) {
  const auto tooShort = [] { return tl::make_unexpected(Reason::SoundDescriptionTooShort); };
  if (entry.size() < plainHeader) return tooShort();
  SoundDescription description;
  description.codec = read32(entry, 4);
  const unsigned version = versionOf(entry);
  std::uint64_t channels = read16(entry, 24);
  std::uint64_t bits = read16(entry, 26);
  description.rate = wholeRate(statedRate(entry));
  std::size_t header = plainHeader;
  if (version == 1) header = packetHeader;
  if (version == 2) {
    if (entry.size() < wideHeader) return tooShort();
    header = std::max<std::size_t>(read32(entry, 36), wideHeader);
    channels = read32(entry, 48);
    bits = read32(entry, 56);
    description.flags = read32(entry, 60);
  }
  if (channels == 0 || channels > SoundDescription::mostChannels) {
    return tl::make_unexpected(Clause(Reason::TooManyChannels, {verbatim(std::to_string(channels))}));
  }
  description.channels = static_cast<int>(channels);
  description.bits = static_cast<int>(std::min<std::uint64_t>(bits, 64));
  readExtensions(entry.subspan(std::min(header, entry.size())), description);
  return description;
}

double soundSampleRate(ByteView entry, std::int32_t mediaTimeScale) {
  const double stated = statedRate(entry);
  if (entry.size() < plainHeader || versionOf(entry) > 1) return stated;
  constexpr unsigned beyondTheField = 65536;
  const auto description = readSoundDescription(entry);
  const unsigned coded = description ? codedRate(*description) : 0;
  if (coded >= beyondTheField) return coded;
  if (stated != 0) return stated;
  return coded != 0 ? coded : mediaTimeScale;
}

}  // namespace movie
