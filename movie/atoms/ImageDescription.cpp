#include "movie/atoms/ImageDescription.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "movie/atoms/AtomTypes.h"

namespace movie {

namespace {

constexpr std::size_t atomHeader = 8;
constexpr std::size_t codecAt = 4;
constexpr std::size_t widthAt = 32;
constexpr std::size_t heightAt = 34;
constexpr std::size_t depthAt = 82;
constexpr std::size_t colorTableIdAt = 84;

constexpr std::size_t gamaSize = 12;
constexpr std::size_t nclcSize = 18;  // header, colour type, three indices
constexpr std::size_t nclxSize = 19;  // and the range byte
constexpr std::size_t profHeader = 12;
constexpr std::size_t clapSize = 40;

std::uint16_t fieldAt(const Bytes& bytes, std::size_t at) {
  return at + 2 <= bytes.size() ? read16(bytes, at) : std::uint16_t{0};
}

Bytes newAtom(FourCC type, std::size_t size) {
  Bytes atom(size, 0);
  write32(atom, 0, static_cast<std::uint32_t>(size));
  write32(atom, 4, type);
  return atom;
}

/// The bytes of the colour table that stands behind the header, 0 when there is none or when it would not fit.
std::size_t colorTableSize(const Bytes& bytes) {
  constexpr std::size_t head = 8;
  constexpr std::size_t entry = 8;
  const int depth = read16(bytes, depthAt) & 31;
  const bool indexed = depth == 1 || depth == 2 || depth == 4 || depth == 8;
  if (!indexed || read16(bytes, colorTableIdAt) != 0) return 0;
  const std::size_t left = bytes.size() - ImageDescription::headerSize;
  if (left < head) return 0;
  const std::size_t size = head + entry * (std::size_t{read16(bytes, ImageDescription::headerSize + 6)} + 1);
  return size <= left ? size : 0;
}

double signedRatio(ByteView body, std::size_t at) {
  return static_cast<double>(static_cast<std::int32_t>(read32(body, at))) / static_cast<double>(read32(body, at + 4));
}

}  // namespace

ImageDescription::ImageDescription(Bytes entry) : bytes_(std::move(entry)) {
  parse();
}

bool ImageDescription::editable() const {
  return bytes_.size() >= headerSize && read32(bytes_, 0) != 1;
}

void ImageDescription::parse() {
  extensions_.clear();
  extensionsEnd_ = std::min(bytes_.size(), headerSize);
  if (!editable()) return;
  extensionsEnd_ += colorTableSize(bytes_);
  while (bytes_.size() - extensionsEnd_ >= atomHeader) {
    const std::uint32_t size = read32(bytes_, extensionsEnd_);
    if (size < atomHeader || size > bytes_.size() - extensionsEnd_) break;
    extensions_.push_back({read32(bytes_, extensionsEnd_ + 4), extensionsEnd_, atomHeader, size});
    extensionsEnd_ += size;
  }
}

FourCC ImageDescription::codec() const {
  return bytes_.size() >= codecAt + 4 ? read32(bytes_, codecAt) : FourCC{0};
}
std::uint16_t ImageDescription::width() const {
  return fieldAt(bytes_, widthAt);
}
std::uint16_t ImageDescription::height() const {
  return fieldAt(bytes_, heightAt);
}
std::uint16_t ImageDescription::depth() const {
  return fieldAt(bytes_, depthAt);
}

std::optional<Atom> ImageDescription::firstGamma() const {
  for (const Atom& extension : extensions_) {
    if (extension.type == code::gama && extension.size >= gamaSize) return extension;
  }
  return std::nullopt;
}

std::optional<Atom> ImageDescription::firstColor(FourCC oneType, FourCC otherType, std::size_t least) const {
  for (const Atom& extension : extensions_) {
    if (extension.type != code::colr || extension.size < least) continue;
    const FourCC type = read32(extensionBody(extension), 0);
    if (type == oneType || type == otherType) return extension;
  }
  return std::nullopt;
}

std::optional<std::int32_t> ImageDescription::gamma() const {
  const auto atom = firstGamma();
  if (!atom) return std::nullopt;
  return static_cast<std::int32_t>(read32(extensionBody(*atom), 0));
}

std::optional<NclcParameters> ImageDescription::nclc() const {
  const auto atom = firstColor(code::nclc, code::nclx, nclcSize);
  if (!atom) return std::nullopt;
  const ByteView body = extensionBody(*atom);
  return NclcParameters{code::nclc, read16(body, 4), read16(body, 6), read16(body, 8)};
}

std::optional<bool> ImageDescription::nclxFullRange() const {
  const auto atom = firstColor(code::nclx, code::nclx, nclxSize);
  if (!atom) return std::nullopt;
  return (extensionBody(*atom)[10] & 0x80) != 0;
}

std::optional<Bytes> ImageDescription::iccProfile() const {
  const auto atom = firstColor(code::prof, code::rICC, profHeader + 1);
  if (!atom) return std::nullopt;
  const ByteView body = extensionBody(*atom);
  return Bytes(body.begin() + 4, body.end());
}

std::optional<CleanAperture> ImageDescription::cleanAperture() const {
  for (const Atom& extension : extensions_) {
    if (extension.type != code::clap || extension.size < clapSize) continue;
    const ByteView body = extensionBody(extension);
    for (std::size_t denominator = 4; denominator < 32; denominator += 8) {
      if (read32(body, denominator) == 0) return std::nullopt;
    }
    const CleanAperture aperture{signedRatio(body, 0), signedRatio(body, 8), signedRatio(body, 16),
                                 signedRatio(body, 24)};
    const bool fits = aperture.width / 2 + std::abs(aperture.horizontalOffset) <= width() / 2.0 &&
                      aperture.height / 2 + std::abs(aperture.verticalOffset) <= height() / 2.0;
    if (aperture.width <= 0 || aperture.height <= 0 || !fits) return std::nullopt;
    return aperture;
  }
  return std::nullopt;
}

OSErr ImageDescription::setGamma(std::int32_t fixed) {
  if (!editable()) return paramErr;
  const auto value = static_cast<std::uint32_t>(fixed);
  if (const auto atom = firstGamma()) {
    write32(bytes_, static_cast<std::size_t>(atom->bodyOffset()), value);
    return noErr;
  }
  Bytes atom = newAtom(code::gama, gamaSize);
  write32(atom, atomHeader, value);
  return insertExtension(atom);
}

OSErr ImageDescription::setNclc(const NclcParameters& parameters, ColorAtomFlavour flavourIfNew) {
  if (!editable()) return paramErr;
  const auto writeIndices = [&parameters](Bytes& bytes, std::size_t at) {
    write16(bytes, at, parameters.primaries);
    write16(bytes, at + 2, parameters.transferFunction);
    write16(bytes, at + 4, parameters.matrix);
  };
  if (const auto atom = firstColor(code::nclc, code::nclx, nclcSize)) {
    writeIndices(bytes_, static_cast<std::size_t>(atom->bodyOffset()) + 4);
    return noErr;
  }
  const bool isNclc = flavourIfNew == ColorAtomFlavour::Nclc;
  Bytes atom = newAtom(code::colr, isNclc ? nclcSize : nclxSize);
  write32(atom, atomHeader, isNclc ? code::nclc : code::nclx);
  writeIndices(atom, atomHeader + 4);
  if (flavourIfNew == ColorAtomFlavour::NclxFullRange) atom.back() = 0x80;
  return insertExtension(atom);
}

OSErr ImageDescription::setIccProfile(ByteView profile) {
  if (!editable() || profile.empty()) return paramErr;
  if (profile.size() > std::numeric_limits<std::uint32_t>::max() - profHeader - bytes_.size()) return paramErr;
  Bytes atom = newAtom(code::colr, profHeader + profile.size());
  write32(atom, atomHeader, code::prof);
  std::copy(profile.begin(), profile.end(), atom.begin() + profHeader);
  const auto old = firstColor(code::prof, code::rICC, profHeader + 1);
  if (!old) return insertExtension(atom);
  return replaceRange(static_cast<std::size_t>(old->offset), static_cast<std::size_t>(old->size), atom);
}

OSErr ImageDescription::removeExtension(FourCC type) {
  if (!editable()) return paramErr;
  const auto found = std::find_if(extensions_.begin(), extensions_.end(),
                                  [type](const Atom& extension) { return extension.type == type; });
  if (found == extensions_.end()) return codecExtensionNotFoundErr;
  return replaceRange(static_cast<std::size_t>(found->offset), static_cast<std::size_t>(found->size), {});
}

OSErr ImageDescription::insertExtension(ByteView atom) {
  return replaceRange(extensionsEnd_, 0, atom);
}

OSErr ImageDescription::replaceRange(std::size_t offset, std::size_t oldSize, ByteView replacement) {
  const std::size_t newSize = bytes_.size() - oldSize + replacement.size();
  if (newSize > std::numeric_limits<std::uint32_t>::max()) return paramErr;
  const auto at = bytes_.begin() + static_cast<std::ptrdiff_t>(offset);
  Bytes edited(bytes_.begin(), at);
  edited.reserve(newSize);
  edited.insert(edited.end(), replacement.begin(), replacement.end());
  edited.insert(edited.end(), at + static_cast<std::ptrdiff_t>(oldSize), bytes_.end());
  write32(edited, 0, static_cast<std::uint32_t>(newSize));
  bytes_ = std::move(edited);
  parse();
  return noErr;
}

}  // namespace movie
