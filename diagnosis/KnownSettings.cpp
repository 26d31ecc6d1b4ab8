#include "diagnosis/KnownSettings.h"

#include <algorithm>
#include <cmath>

#include "diagnosis/Signal.h"

namespace diagnosis {
namespace {

/// An exponent, or its reciprocal where the mistake was made the other way round.
struct KnownExponent {
  double number;
  KnownSetting setting;
};

constexpr KnownExponent gammas(double lower, double higher) {
  return {higher / lower, {Setting::Gammas, lower, higher}};
}

// Where the gammas come from. 1.8: Macintosh displays until 2009 (Mac OS X 10.5), and movies of that time. 1.96: what
// ColorSync makes of BT.709's transfer function: 1.961, to which the curve of BT.709 comes nearest as a pure
// power. 2.2: displays of computers (IEC 61966-2-1), and the gamma levels of QuickTime movies. 2.4: reference displays
// (ITU-R BT.1886). 2.6: cinema projectors (SMPTE RP 431-2).
constexpr KnownExponent knownExponents[] = {
    gammas(1.8, 2.2),   // 1.222 and 0.818
    gammas(1.8, 2.4),   // 1.333 and 0.750
    gammas(1.96, 2.2),  // 1.122 and 0.891
    gammas(1.96, 2.4),  // 1.224 and 0.817
    gammas(1.96, 2.6),  // 1.327 and 0.754
    gammas(2.2, 2.4),   // 1.091 and 0.917
    gammas(2.2, 2.6),   // 1.182 and 0.846
    gammas(2.4, 2.6),   // 1.083 and 0.923
    // ITU-R BT.2100, table 5: HLG's system gamma at a peak of 1000 cd/m2. 0.833 the other way round.
    {1.2, {Setting::SystemGamma}},
    // Poynton, Digital Video and HDTV, "Rendering intent": television encodes by 0.5 for displays of 2.5. 0.8 the other
    // way round.
    {1.25, {Setting::DimSurround}},
};

/// dest = gain * source + offset, in codes of 219 from black to white.
struct KnownLine {
  double gain, offset;
  Setting setting;
};

// SMPTE 170M: a set-up of 7.5 IRE, with 92.5 left for the picture.
constexpr double setUp = 0.075;
constexpr KnownLine knownLines[] = {
    {1 - setUp, lumaCodes* setUp, Setting::SetUp},
    {1 / (1 - setUp), -lumaCodes* setUp / (1 - setUp), Setting::SetUp},
    {1, 16, Setting::BlackAt16},
    {1, -16, Setting::BlackAt16},
};

/// As far as an exponent may be off at least: encoders round.
constexpr double exponentReach = 0.004;
/// As a line is told from a wrong range's.
constexpr double lineReach = 0.012, offsetReach = 2;

std::vector<KnownSetting> ofExponent(const Cause& cause) {
  if (!cause.exponent) return {};
  const double exponent = *cause.exponent;
  const Interval interval = cause.exponentInterval.value_or(Interval{exponent, exponent});
  const double low = std::min(interval.low, exponent - exponentReach);
  const double high = std::max(interval.high, exponent + exponentReach);
  std::vector<KnownSetting> found;
  for (const auto& [number, setting] : knownExponents) {
    const double wanted = exponent > 1 ? number : 1 / number;
    if (wanted >= low && wanted <= high) found.push_back(setting);
  }
  return found.size() <= 2 ? found : std::vector<KnownSetting>();
}

std::vector<KnownSetting> ofLine(const Cause& cause) {
  if (!cause.gain || !cause.offset) return {};
  for (const KnownLine& line : knownLines) {
    if (std::abs(*cause.gain - line.gain) <= lineReach && std::abs(*cause.offset - line.offset) <= offsetReach) {
      return {{line.setting}};
    }
  }
  return {};
}

}  // namespace

std::vector<KnownSetting> settingsBehind(const Cause& cause) {
  switch (cause.kind) {
    case CauseKind::Power:
      return ofExponent(cause);
    case CauseKind::Gain:
      return ofLine(cause);
    case CauseKind::Range:
      if (cause.where != Where::Codes) return {};
      // 1.164 times the source less 19 codes, and 0.859 times the source and 14: 255 and 219 levels for each other.
      return {{cause.direction == Direction::Compressed ? Setting::VideoAsFull : Setting::FullAsVideo}};
    default:
      return {};
  }
}

}  // namespace diagnosis
