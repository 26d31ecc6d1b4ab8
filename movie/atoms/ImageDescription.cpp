#include "movie/atoms/ImageDescription.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "movie/atoms/AtomTypes.h"

namespace movie {

namespace {

constexpr std::size_t headerOfAtom = 8;
constexpr std::size_t depthAt = 82;
constexpr std::size_t colorTableIdAt = 84;

constexpr std::size_t gamaSize = 12;
constexpr std::size_t nclcSize = 18;  // header, colour type, three indices
constexpr std::size_t nclxSize = 19;  // and the range byte
constexpr std::size_t profHeader = 12;
constexpr std::size_t clapSize = 40;

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
  while (bytes_.size() - extensionsEnd_ >= headerOfAtom) {
    const std::uint32_t size = read32(bytes_, extensionsEnd_);
    if (size < headerOfAtom || size > bytes_.size() - extensionsEnd_) break;
    extensions_.push_back({read32(bytes_, extensionsEnd_ + 4), extensionsEnd_, headerOfAtom, size});
    extensionsEnd_ += size;
  }
}

/// The first extension of a type that has so many bytes and begins with one of these kinds, if there are any.
std::optional<Atom> ImageDescription::first(FourCC type, std::size_t least, std::initializer_list<FourCC> kinds) const {
  for (const Atom& extension : extensions_) {
    if (extension.type != type || extension.size < least) continue;
    if (kinds.size() == 0) return extension;
    if (std::find(kinds.begin(), kinds.end(), read32(extensionBody(extension), 0)) != kinds.end()) return extension;
  }
  return std::nullopt;
}

std::optional<std::int32_t> ImageDescription::gamma() const {
  const auto atom = first(code::gama, gamaSize);
  if (!atom) return std::nullopt;
  return static_cast<std::int32_t>(read32(extensionBody(*atom), 0));
}

std::optional<NclcParameters> ImageDescription::nclc() const {
  const auto atom = first(code::colr, nclcSize, {code::nclc, code::nclx});
  if (!atom) return std::nullopt;
  const ByteView body = extensionBody(*atom);
  return NclcParameters{code::nclc, read16(body, 4), read16(body, 6), read16(body, 8)};
}

std::optional<bool> ImageDescription::nclxFullRange() const {
  const auto atom = first(code::colr, nclxSize, {code::nclx});
  if (!atom) return std::nullopt;
  return (extensionBody(*atom)[10] & 0x80) != 0;
}

std::optional<Bytes> ImageDescription::iccProfile() const {
  const auto atom = first(code::colr, profHeader + 1, {code::prof, code::rICC});
  if (!atom) return std::nullopt;
  const ByteView body = extensionBody(*atom);
  return Bytes(body.begin() + 4, body.end());
}

std::optional<CleanAperture> ImageDescription::cleanAperture() const {
  const auto atom = first(code::clap, clapSize);
  if (!atom) return std::nullopt;
  const ByteView body = extensionBody(*atom);
  for (std::size_t denominator = 4; denominator < 32; denominator += 8) {
    if (read32(body, denominator) == 0) return std::nullopt;
  }
  const CleanAperture aperture{signedRatio(body, 0), signedRatio(body, 8), signedRatio(body, 16),
                               signedRatio(body, 24)};
  const bool fits = aperture.width / 2 + std::abs(aperture.horizontalOffset) <= width() / 2.0 &&
                    aperture.height / 2 + std::abs(aperture.verticalOffset) <= height() / 2.0;
  if (aperture.width < 1 || aperture.height < 1 || !fits) return std::nullopt;
  return aperture;
}

OSErr ImageDescription::setGamma(std::int32_t fixed) {
  if (!editable()) return paramErr;
  const auto value = static_cast<std::uint32_t>(fixed);
  if (const auto atom = first(code::gama, gamaSize)) {
    write32(bytes_, static_cast<std::size_t>(atom->bodyOffset()), value);
    return noErr;
  }
  Bytes atom = atomHeader(code::gama, gamaSize - headerOfAtom);
  append32(atom, value);
  return replaceRange(extensionsEnd_, 0, atom);
}

OSErr ImageDescription::setNclc(const NclcParameters& parameters, ColorAtomFlavour flavourIfNew) {
  if (!editable()) return paramErr;
  const auto writeIndices = [&parameters](Bytes& bytes, std::size_t at) {
    write16(bytes, at, parameters.primaries);
    write16(bytes, at + 2, parameters.transferFunction);
    write16(bytes, at + 4, parameters.matrix);
  };
  if (const auto atom = first(code::colr, nclcSize, {code::nclc, code::nclx})) {
    writeIndices(bytes_, static_cast<std::size_t>(atom->bodyOffset()) + 4);
    return noErr;
  }
  const bool isNclc = flavourIfNew == ColorAtomFlavour::Nclc;
  const std::size_t size = isNclc ? nclcSize : nclxSize;
  Bytes atom = atomHeader(code::colr, size - headerOfAtom);
  append32(atom, isNclc ? code::nclc : code::nclx);
  atom.resize(size);
  writeIndices(atom, headerOfAtom + 4);
  if (flavourIfNew == ColorAtomFlavour::NclxFullRange) atom.back() = 0x80;
  return replaceRange(extensionsEnd_, 0, atom);
}

OSErr ImageDescription::setIccProfile(ByteView profile) {
  if (!editable() || profile.empty()) return paramErr;
  if (profile.size() > std::numeric_limits<std::uint32_t>::max() - profHeader - bytes_.size()) return paramErr;
  Bytes atom = atomHeader(code::colr, 4 + profile.size());
  append32(atom, code::prof);
  append(atom, profile);
  const auto old = first(code::colr, profHeader + 1, {code::prof, code::rICC});
  if (!old) return replaceRange(extensionsEnd_, 0, atom);
  return replaceRange(static_cast<std::size_t>(old->offset), static_cast<std::size_t>(old->size), atom);
}

OSErr ImageDescription::removeExtension(FourCC type) {
  if (!editable()) return paramErr;
  const auto found = first(type, 0);
  if (!found) return codecExtensionNotFoundErr;
  return replaceRange(static_cast<std::size_t>(found->offset), static_cast<std::size_t>(found->size), {});
}

OSErr ImageDescription::replaceRange(std::size_t offset, std::size_t oldSize, ByteView replacement) {
  const std::size_t newSize = bytes_.size() - oldSize + replacement.size();
  if (newSize > std::numeric_limits<std::uint32_t>::max()) return paramErr;
  const auto at = bytes_.begin() + static_cast<std::ptrdiff_t>(offset);
  const auto rest = bytes_.erase(at, at + static_cast<std::ptrdiff_t>(oldSize));
  bytes_.insert(rest, replacement.begin(), replacement.end());
  write32(bytes_, 0, static_cast<std::uint32_t>(newSize));
  parse();
  return noErr;
}

}  // namespace movie
