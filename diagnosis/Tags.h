#pragma once

#include <cstdint>
#include <optional>

#include "movie/atoms/ImageDescription.h"
#include "movie/decode/Picture.h"

namespace diagnosis {

enum class SampleRange { Video, Full };

/// What one side says of its colours, and what is in force where it says nothing.
struct SideTags {
  std::optional<std::int32_t> gamma;  ///< 16.16
  std::optional<movie::NclcParameters> nclc;
  std::optional<movie::Bytes> iccProfile;
  movie::NclcParameters coded{0, 2, 2, 2};  ///< what the bitstream says
  int codedHeight = 1080;                   ///< lines of the bitstream's pictures
  /// ITU-T H.273: of the NCLC record where it says something, else of the bitstream; 2 where neither does.
  std::uint16_t primaries = 2, transferFunction = 2, matrix = 2;
  movie::PictureModel model = movie::PictureModel::YCbCr;
  int depth = 8;  ///< bits of a coded sample
  movie::PictureRange statedRange = movie::PictureRange::Unspecified;
  SampleRange range = SampleRange::Video;  ///< in force
  /// In force, as ITU-T H.273 numbers it, 6 for both names of BT.601's; 0 for RGB and grey.
  std::uint16_t matrixInForce = 1;
};

/// The tags of a side: of its first image description, and of a picture of it.
SideTags tagsOf(const movie::ImageDescription& description, const movie::Picture& picture);

/// The destination's tags once the source's gamma, NCLC record and profile are copied onto it: a gamma that the source
/// has not is removed, the others stay.
SideTags synced(const SideTags& source, const SideTags& dest);

/// How two things that are stated stand to each other.
enum class Comparison {
  Equal,  ///< or both silent, or numbers of the same meaning
  Lost,   ///< only the source states it
  Added,  ///< only the destination does
  Differs,
};

/// Whether samples mean the same under both.
bool sameMeaning(const SideTags& source, const SideTags& dest);

struct TagComparison {
  SideTags source, dest;
  Comparison gamma = Comparison::Equal, profile = Comparison::Equal;
  Comparison primaries = Comparison::Equal, transferFunction = Comparison::Equal, matrix = Comparison::Equal;
  Comparison range = Comparison::Equal;  ///< of what is stated
  /// Whether one differs that a player may go by: gamma, profile, or primaries or transfer function of another meaning,
  /// or one that is lost, or one that is added and is not what players take silence for. Range and matrix tell in the
  /// pixels.
  bool counts() const;
};

TagComparison compareTags(const SideTags& source, const SideTags& dest);

}  // namespace diagnosis
