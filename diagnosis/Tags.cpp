#include "diagnosis/Tags.h"

#include "movie/render/YCbCrMatrix.h"

namespace diagnosis {
namespace {

constexpr std::uint16_t unspecified = 2;

/// 0 is reserved, or stands for RGB, and says nothing of the picture's primaries and transfer function either.
bool isStated(std::uint16_t code) {
  return code != 0 && code != unspecified;
}

std::uint16_t statedOr(std::uint16_t code, std::uint16_t other) {
  if (isStated(code)) return code;
  return isStated(other) ? other : unspecified;
}

/// Transfer functions that are defined by one curve have one number here.
std::uint16_t transferMeaning(std::uint16_t code) {
  return code == 6 || code == 14 || code == 15 ? 1 : code;
}

/// SMPTE ST 170 and ST 240 share their primaries.
std::uint16_t primariesMeaning(std::uint16_t code) {
  return code == 7 ? 6 : code;
}

std::uint16_t matrixMeaning(std::uint16_t code) {
  return code == 5 ? 6 : code;
}

Comparison compareCodes(std::uint16_t source, std::uint16_t dest) {
  if (source == dest) return Comparison::Equal;
  if (!isStated(dest)) return Comparison::Lost;
  return isStated(source) ? Comparison::Differs : Comparison::Added;
}

template <typename Value>
Comparison compareOptional(const std::optional<Value>& source, const std::optional<Value>& dest) {
  if (source == dest) return Comparison::Equal;
  if (!dest) return Comparison::Lost;
  return source ? Comparison::Differs : Comparison::Added;
}

Comparison compareRanges(movie::PictureRange source, movie::PictureRange dest) {
  using Range = movie::PictureRange;
  if (source == dest) return Comparison::Equal;
  if (dest == Range::Unspecified) return Comparison::Lost;
  return source == Range::Unspecified ? Comparison::Added : Comparison::Differs;
}

SampleRange rangeInForce(const movie::Picture& picture) {
  switch (picture.range) {
    case movie::PictureRange::Video:
      return SampleRange::Video;
    case movie::PictureRange::Full:
      return SampleRange::Full;
    case movie::PictureRange::Unspecified:
      break;
  }
  return picture.model == movie::PictureModel::YCbCr ? SampleRange::Video : SampleRange::Full;
}

/// What follows from the NCLC record and the bitstream.
void setCodes(SideTags& tags) {
  const movie::NclcParameters stated = tags.nclc.value_or(movie::NclcParameters{0, 2, 2, 2});
  tags.primaries = statedOr(stated.primaries, tags.coded.primaries);
  tags.transferFunction = statedOr(stated.transferFunction, tags.coded.transferFunction);
  tags.matrix = statedOr(stated.matrix, tags.coded.matrix);
  const bool hasMatrix = tags.model == movie::PictureModel::YCbCr;
  tags.matrixInForce =
      hasMatrix ? matrixMeaning(movie::matrixIndexInForce(tags.nclc, tags.coded.matrix, tags.codedHeight)) : 0;
}

/// Primaries and transfer functions of standard video, which is what players take for silence.
bool isUsualPrimaries(std::uint16_t code) {
  return code >= 1 && code <= 7;
}

bool isUsualTransferFunction(std::uint16_t code) {
  return (code >= 1 && code <= 7) || (code >= 11 && code <= 15);
}

}  // namespace

SideTags tagsOf(const movie::ImageDescription& description, const movie::Picture& picture) {
  SideTags tags;
  tags.gamma = description.gamma();
  tags.nclc = description.nclc();
  tags.iccProfile = description.iccProfile();
  tags.coded = {0, picture.primaries, picture.transferFunction, picture.matrix};
  tags.model = picture.model;
  tags.depth = picture.depth;
  tags.statedRange = picture.range;
  tags.range = rangeInForce(picture);
  tags.codedHeight = picture.codedHeight;
  setCodes(tags);
  return tags;
}

bool sameMeaning(const SideTags& source, const SideTags& dest) {
  return source.range == dest.range && source.matrixInForce == dest.matrixInForce;
}

SideTags synced(const SideTags& source, const SideTags& dest) {
  SideTags tags = dest;
  tags.gamma = source.gamma.value_or(0) != 0 ? source.gamma : std::nullopt;
  if (source.nclc && source.nclc->primaries != 0) tags.nclc = source.nclc;
  if (source.iccProfile) tags.iccProfile = source.iccProfile;
  setCodes(tags);
  return tags;
}

bool TagComparison::counts() const {
  const auto differs = [](Comparison comparison) { return comparison != Comparison::Equal; };
  const auto missing = [](Comparison comparison) {
    return comparison == Comparison::Lost || comparison == Comparison::Differs;
  };
  const bool unusual = (primaries == Comparison::Added && !isUsualPrimaries(dest.primaries)) ||
                       (transferFunction == Comparison::Added && !isUsualTransferFunction(dest.transferFunction));
  return differs(gamma) || differs(profile) || missing(primaries) || missing(transferFunction) || unusual;
}

TagComparison compareTags(const SideTags& source, const SideTags& dest) {
  TagComparison result{.source = source, .dest = dest};
  result.gamma = compareOptional(source.gamma, dest.gamma);
  result.profile = compareOptional(source.iccProfile, dest.iccProfile);
  result.primaries = compareCodes(primariesMeaning(source.primaries), primariesMeaning(dest.primaries));
  result.transferFunction =
      compareCodes(transferMeaning(source.transferFunction), transferMeaning(dest.transferFunction));
  result.matrix = compareCodes(matrixMeaning(source.matrix), matrixMeaning(dest.matrix));
  result.range = compareRanges(source.statedRange, dest.statedRange);
  return result;
}

}  // namespace diagnosis
