#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

#include "movie/atoms/AtomReader.h"

namespace movie {

/// NCLC colour parameters: the 10 bytes that the property 'nclc' gives and takes, with no padding between or behind the
/// fields; no reference may be bound to the type, which may stand at an odd multiple of 2. The indices are those of
/// ITU-T H.273 (primaries, transfer characteristics, matrix coefficients).
#pragma pack(push, 2)
struct NclcParameters {
  std::uint32_t colorParamType = 0;  ///< 'nclc' when set, whatever type the atom has, so that MOV and MP4 compare
  std::uint16_t primaries = 0;
  std::uint16_t transferFunction = 0;
  std::uint16_t matrix = 0;

  friend bool operator==(const NclcParameters&, const NclcParameters&) = default;
};
#pragma pack(pop)
static_assert(sizeof(NclcParameters) == 10);

/// Which flavour of colr atom a new record becomes.
enum class ColorAtomFlavour {
  Nclc,            ///< 18 bytes, QuickTime: major brand 'qt  ' or no ftyp
  NclxVideoRange,  ///< 19 bytes, ISO: full-range bit 0
  NclxFullRange    ///< 19 bytes, ISO: full-range bit 1
};

/// Result codes of the three editing operations: 0 or one of the toolbox's own.
using OSErr = std::int16_t;
inline constexpr OSErr noErr = 0;
inline constexpr OSErr paramErr = -50;
inline constexpr OSErr codecExtensionNotFoundErr = -8971;

/// A clean-aperture atom ('clap'): the part of the encoded picture meant to be seen. All in pixels, as fractions.
/// Source: QTFF "Clean aperture"; ISO/IEC 14496-12, 12.1.4.
struct CleanAperture {
  double width = 0, height = 0;                     ///< above 0
  double horizontalOffset = 0, verticalOffset = 0;  ///< of its centre from the picture's centre, right and down
};

/// The sample description of a video track: an 86-byte header (size and type included), an optional colour table, then
/// extension atoms, then whatever rest the writer left. The bytes are the truth: an edit changes those of one extension
/// and the size field, everything else stays as it was. Source: QTFF "Video sample description"; ISO/IEC
/// 14496-12, 12.1.3.
///
/// A property is the first well-formed atom of its kind: gama of at least 12 bytes; for nclc the first colr of type
/// nclc or nclx; for iccp the first colr of type prof or rICC.
class ImageDescription {
 public:
  static constexpr std::size_t headerSize = 86;

  /// An image description over one whole entry of a stsd atom. An entry below 86 bytes is padded with zeros in the view
  /// of its header fields; it has no extensions and refuses edits with paramErr, as does one with a 64-bit size. A
  /// colour table that would not fit into the entry is taken as absent.
  explicit ImageDescription(Bytes entry);

  const Bytes& bytes() const { return bytes_; }
  FourCC codec() const { return bytes_.size() >= 8 ? read32(bytes_, 4) : 0; }  ///< the data format, 'apch', 'avc1' ...
  std::uint16_t width() const { return fieldAt(32); }                          ///< pixels, as encoded
  std::uint16_t height() const { return fieldAt(34); }
  std::uint16_t depth() const { return fieldAt(82); }  ///< the depth field, 24, 32, 40 for 8 bits of grey ...

  /// The extensions in file order; offsets are into bytes(). Read while 8 bytes remain and the size fits.
  const std::vector<Atom>& extensions() const { return extensions_; }
  ByteView extensionBody(const Atom& extension) const { return bodyOf(bytes_, extension); }

  std::optional<std::int32_t> gamma() const;   ///< 16.16 fixed point
  std::optional<NclcParameters> nclc() const;  ///< colorParamType reads as 'nclc'
  std::optional<bool> nclxFullRange() const;   ///< the range bit of the first nclx, when it has one
  std::optional<Bytes> iccProfile() const;     ///< the ICC profile's bytes, at least one
  /// Of the first clap of full size. None when a denominator is 0, when the aperture is less than a pixel wide or high
  /// (there are exporters that mistake the pixel's aspect for it), or when it is not wholly inside the picture.
  std::optional<CleanAperture> cleanAperture() const;

  /// Rewrite the property's atom where it stands (its type, its size as far as the value allows, and any further bytes
  /// are kept: the range byte of an nclx), or append one after the last extension, before the rest. rICC becomes prof.
  /// The parameters' colorParamType is not looked at. An empty profile is refused with paramErr.
  OSErr setGamma(std::int32_t fixed);
  OSErr setNclc(const NclcParameters& parameters, ColorAtomFlavour flavourIfNew);
  OSErr setIccProfile(ByteView profile);

  /// Removes the first extension whose own atom type is `type`; codecExtensionNotFoundErr when there is none. The
  /// colour record and the profile live in atoms of type 'colr', so 'nclc' and 'iccp' match nothing: that is settled.
  OSErr removeExtension(FourCC type);

 private:
  std::uint16_t fieldAt(std::size_t at) const {
    return at + 2 <= bytes_.size() ? read16(bytes_, at) : std::uint16_t{0};
  }
  bool editable() const;
  void parse();
  OSErr replaceRange(std::size_t offset, std::size_t oldSize, ByteView replacement);
  std::optional<Atom> first(FourCC type, std::size_t least, std::initializer_list<FourCC> kinds = {}) const;

  Bytes bytes_;
  std::vector<Atom> extensions_;
  std::size_t extensionsEnd_ = 0;  ///< where a new extension goes
};

}  // namespace movie
