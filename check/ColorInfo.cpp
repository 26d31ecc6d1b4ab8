#include "check/ColorInfo.h"

#include <cstdint>

#include "SharedFiles/log/QVLog.h"
#include "movie/Movie.h"

namespace check {

ColorInfo* zeroColorInfo(ColorInfo* info) {
  *info = ColorInfo{};
  return info;
}

int colorInfoCompare(ColorInfo source, ColorInfo dest) {
  QVLog::appendLog("source colorparamtype: %i", static_cast<std::int32_t>(source.colorParamType));
  QVLog::appendLog("source matrix: %i", source.matrix);
  QVLog::appendLog("source primaries: %i", source.primaries);
  QVLog::appendLog("source transferfunction: %i", source.transferFunction);
  QVLog::appendLog("dest colorparamtype: %i", static_cast<std::int32_t>(dest.colorParamType));
  QVLog::appendLog("dest matrix: %i", dest.matrix);
  QVLog::appendLog("dest primaries: %i", dest.primaries);
  QVLog::appendLog("dest transferfunction: %i", dest.transferFunction);
  return source == dest ? 0 : -1;
}

bool isColorInfoSet(const ColorInfo& info) {
  return info != ColorInfo{};
}

movie::ImageDescription firstDescription(const movie::Media& media) {
  return media.imageDescription(1).value_or(movie::ImageDescription(movie::Bytes{}));
}

ColorInfo colorInfoOf(const movie::ImageDescription& description) {
  ColorInfo none;
  return description.nclc().value_or(*zeroColorInfo(&none));
}

float gammaLevel(std::optional<std::int32_t> fixed) {
  return static_cast<float>(fixed.value_or(0)) * (1.0F / 65536.0F);
}

}  // namespace check
