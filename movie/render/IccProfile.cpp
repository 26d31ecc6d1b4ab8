#include "movie/render/IccProfile.h"

#include <algorithm>
#include <array>
#include <limits>
#include <type_traits>
#include <vector>

#include <lcms2.h>

#include "movie/atoms/Utf16.h"
#include "movie/render/RecentlyUsed.h"

namespace movie {
namespace {

template <auto close>
struct HandleCloser {
  void operator()(auto* handle) const { close(handle); }
};
using ContextHandle = std::unique_ptr<std::remove_pointer_t<cmsContext>, HandleCloser<cmsDeleteContext>>;
using ProfileHandle = std::unique_ptr<std::remove_pointer_t<cmsHPROFILE>, HandleCloser<cmsCloseProfile>>;
using TransformHandle = std::unique_ptr<std::remove_pointer_t<cmsHTRANSFORM>, HandleCloser<cmsDeleteTransform>>;

/// A context of its own for each use: no state is shared, and what a broken profile makes the engine say goes nowhere.
ContextHandle makeContext() {
  ContextHandle context(cmsCreateContext(nullptr, nullptr));
  if (context) cmsSetLogErrorHandlerTHR(context.get(), [](cmsContext, cmsUInt32Number, const char*) {});
  return context;
}

ProfileHandle openProfile(cmsContext context, ByteView bytes) {
  if (bytes.size() > std::numeric_limits<cmsUInt32Number>::max()) return nullptr;
  return ProfileHandle(cmsOpenProfileFromMemTHR(context, bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
}

TransformHandle makeTransform(cmsContext context, ByteView bytes, cmsUInt32Number flags) {
  const ProfileHandle profile = openProfile(context, bytes);
  if (!profile || cmsGetColorSpace(profile.get()) != cmsSigRgbData) return nullptr;
  const ProfileHandle srgb(cmsCreate_sRGBProfileTHR(context));
  if (!srgb) return nullptr;
  return TransformHandle(cmsCreateTransformTHR(context, profile.get(), TYPE_RGB_16, srgb.get(), TYPE_RGB_8,
                                               INTENT_RELATIVE_COLORIMETRIC, flags | cmsFLAGS_NOCACHE));
}

/// Overwrites what would change from run to run. Source: ICC.1, 7.2: the creation time (year, month, day, hours,
/// minutes, seconds, 16 bits each) and the profile ID, where zeros mean that none was computed.
void fixVolatileFields(Bytes& profile) {
  constexpr std::array<std::uint16_t, 6> creation{2000, 1, 1, 0, 0, 0};
  constexpr std::size_t creationOffset = 24, idOffset = 84, idSize = 16;
  for (std::size_t i = 0; i < creation.size(); ++i) write16(profile, creationOffset + 2 * i, creation[i]);
  std::fill_n(profile.begin() + idOffset, idSize, std::uint8_t{0});
}

Bytes makeSrgbProfile() {
  constexpr std::size_t headerSize = 128;
  const ContextHandle context = makeContext();
  if (!context) return {};
  const ProfileHandle profile(cmsCreate_sRGBProfileTHR(context.get()));
  cmsUInt32Number size = 0;
  if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size) || size < headerSize) return {};
  Bytes bytes(size);
  if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size)) return {};
  fixVolatileFields(bytes);
  return bytes;
}

}  // namespace

const Bytes& sRGBProfile() {
  static const Bytes profile = makeSrgbProfile();
  return profile;
}

std::string profileDescription(ByteView profile) {
  const ContextHandle context = makeContext();
  const ProfileHandle opened = context ? openProfile(context.get(), profile) : nullptr;
  if (!opened) return {};
  const auto info = [&](wchar_t* buffer, cmsUInt32Number bytes) {
    return cmsGetProfileInfo(opened.get(), cmsInfoDescription, "en", "US", buffer, bytes);
  };
  std::vector<wchar_t> units(info(nullptr, 0) / sizeof(wchar_t));
  if (units.empty()) return {};
  info(units.data(), static_cast<cmsUInt32Number>(units.size() * sizeof(wchar_t)));
  // UTF-16 in wide characters, up to a zero.
  return utf8Of(std::u16string(units.begin(), std::find(units.begin(), units.end(), L'\0')));
}

bool isUsableRgbProfile(ByteView profile) {
  const ContextHandle context = makeContext();
  return context && makeTransform(context.get(), profile, cmsFLAGS_NOOPTIMIZE) != nullptr;
}

struct ProfileTransform::Handles {
  ContextHandle context;
  TransformHandle transform;  // after the context, so that it goes before it
};

ProfileTransform::~ProfileTransform() = default;

std::shared_ptr<const ProfileTransform> ProfileTransform::forProfile(ByteView profile) {
  static RecentlyUsed<Bytes, ProfileTransform> transforms;
  const auto make = [&]() -> std::shared_ptr<const ProfileTransform> {
    ContextHandle context = makeContext();
    if (!context) return nullptr;
    TransformHandle transform = makeTransform(context.get(), profile, cmsFLAGS_HIGHRESPRECALC);
    if (!transform) return nullptr;
    std::shared_ptr<ProfileTransform> made(new ProfileTransform);
    made->handles_ = std::make_unique<Handles>(Handles{std::move(context), std::move(transform)});
    return made;
  };
  return transforms.get(Bytes(profile.begin(), profile.end()), make);
}

void ProfileTransform::apply(std::span<const std::uint16_t> rgb, std::span<std::uint8_t> srgb) const {
  const std::size_t pixels = std::min(rgb.size(), srgb.size()) / 3;
  constexpr std::size_t atOnce = 1U << 20;
  for (std::size_t done = 0; done < pixels; done += atOnce) {
    const auto count = static_cast<cmsUInt32Number>(std::min(atOnce, pixels - done));
    cmsDoTransform(handles_->transform.get(), &rgb[3 * done], &srgb[3 * done], count);
  }
}

}  // namespace movie
