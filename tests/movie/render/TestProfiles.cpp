#include "tests/movie/render/TestProfiles.h"

#include <array>

#include <lcms2.h>

namespace movie::test {
namespace {

constexpr cmsCIExyY d65{0.3127, 0.3290, 1.0};

/// The profile's bytes; closes it.
Bytes savedProfile(cmsHPROFILE profile) {
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, nullptr, &size);
  Bytes bytes(size);
  cmsSaveProfileToMem(profile, bytes.data(), &size);
  cmsCloseProfile(profile);
  return bytes;
}

}  // namespace

Bytes rgbProfile(double power, const std::wstring& description) {
  const cmsCIExyYTRIPLE primaries{{0.64, 0.33, 1.0}, {0.30, 0.60, 1.0}, {0.15, 0.06, 1.0}};
  cmsToneCurve* const curve = cmsBuildGamma(nullptr, power);
  const std::array<cmsToneCurve*, 3> curves{curve, curve, curve};
  const cmsHPROFILE profile = cmsCreateRGBProfile(&d65, &primaries, curves.data());
  cmsMLU* const text = cmsMLUalloc(nullptr, 1);
  cmsMLUsetWide(text, "en", "US", description.c_str());
  cmsWriteTag(profile, cmsSigProfileDescriptionTag, text);
  cmsMLUfree(text);
  cmsFreeToneCurve(curve);
  return savedProfile(profile);
}

Bytes greyProfile() {
  cmsToneCurve* const curve = cmsBuildGamma(nullptr, 2.2);
  const cmsHPROFILE profile = cmsCreateGrayProfile(&d65, curve);
  cmsFreeToneCurve(curve);
  return savedProfile(profile);
}

}  // namespace movie::test
