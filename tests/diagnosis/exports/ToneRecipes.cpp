#include "tests/diagnosis/exports/Recipe.h"

namespace diagnosis::test {
namespace {

/// A curve of luma in the master's own samples.
Recipe byLuma(const std::string& name, CauseKind kind, const Master& master, const Encoding& encoding,
              const std::string& curve) {
  return {.name = master.name + "-" + name,
          .master = master,
          .truth = only(kind),
          .filters = lumaCurve(master.encoding.format, master.colors.full, curve) + "," +
                     converted(master.colors, master.colors, encoding.format),
          .encoding = encoding,
          .tags = master.colors};
}

/// Filters on R'G'B'.
Recipe byRgb(const std::string& name, CauseKind kind, const Master& master, const Encoding& encoding,
             const Colors& colors, const std::string& filters) {
  return changedInRgb(name, only(kind), master, encoding, colors, filters);
}

/// Filters on the samples of 8 bits that the export has.
Recipe bySamples(const std::string& name, CauseKind kind, const Master& master, const Encoding& encoding,
                 const std::string& filters) {
  return {.name = master.name + "-" + name,
          .master = master,
          .truth = only(kind),
          .filters = converted(master.colors, master.colors, encoding.format) + "," + filters,
          .encoding = encoding,
          .tags = master.colors};
}

// Light and signal as IEC 61966-2-1 and ITU-R BT.709 relate them.
const std::string lightOfSrgb = "if(lte(S\\,0.04045)\\,S/12.92\\,pow((S+0.055)/1.055\\,2.4))";
const std::string lightOf709 = "if(lt(S\\,0.081)\\,S/4.5\\,pow((S+0.099)/1.099\\,1/0.45))";

std::string encodedAs709(const std::string& light) {
  return "if(lt(" + light + "\\,0.018)\\,4.5*" + light + "\\,1.099*pow(" + light + "\\,0.45)-0.099)";
}

std::string encodedAsSrgb(const std::string& light) {
  return "if(lte(" + light + "\\,0.0031308)\\,12.92*" + light + "\\,1.055*pow(" + light + "\\,1/2.4)-0.055)";
}

}  // namespace

std::vector<Recipe> gainRecipes() {
  constexpr CauseKind gain = CauseKind::Gain;
  const Master master = proResMaster();
  return {
      byLuma("gain-080", gain, master, proRes(), "0.8*S"),
      byLuma("gain-090", gain, master, proRes(), "0.9*S"),
      byLuma("gain-108", gain, master, proRes(), "1.08*S"),
      byLuma("gain-120", gain, master, x264(20), "1.2*S"),
      byLuma("offset-up", gain, master, proRes(), "S+0.055"),
      byLuma("offset-down", gain, master, x264(22), "S-0.05"),
      byLuma("washed-out", gain, master, x264(24), "0.93*S+0.07"),
      byLuma("gain-085-crf32", gain, master, x264(32), "0.85*S"),
      byRgb("fade-70", gain, master, proRes(), video709, rgbCurve("0.7*S")),
      byRgb("fade-85", gain, master, x264(22), video709, rgbCurve("0.85*S")),
      byRgb("fade-to-white", gain, master, x264(22), video709, rgbCurve("0.85*S+0.15")),
      byRgb("exposed", gain, master, proRes(), video709, rgbCurve("1.12*S")),
      byRgb("fade-75", gain, pngMaster(), x264(22), video709, rgbCurve("0.75*S")),
      byRgb("fade-80", gain, fullRangeMaster(), x264(22), full709, rgbCurve("0.8*S")),
      bySamples("contrast-130", gain, master, x264(20), "eq=contrast=1.3"),
      bySamples("contrast-115", gain, master, x264(20), "eq=contrast=1.15"),
      bySamples("contrast-110", gain, h264Master(), x264(20), "eq=contrast=1.1"),
      bySamples("contrast-085", gain, master, x264(20), "eq=contrast=0.85"),
      bySamples("brighter", gain, master, x264(20), "eq=brightness=0.05"),
      bySamples("darker", gain, master, x264(24), "eq=brightness=-0.05"),
  };
}

std::vector<Recipe> toneRecipes() {
  constexpr CauseKind tone = CauseKind::Tone;
  const Master master = proResMaster();
  std::vector<Recipe> all{
      byRgb("s-curve", tone, master, proRes(), video709, "curves=preset=strong_contrast"),
      byRgb("s-curve-mild", tone, master, x264(20), video709, "curves=preset=increase_contrast"),
      byRgb("vintage", tone, master, x264(20), video709, "curves=preset=vintage"),
      byRgb("lifted-shadows", tone, master, proRes(), video709, "curves=all='0/0.16 0.15/0.22 0.4/0.41 1/1'"),
      byRgb("crushed-highlights", tone, master, proRes(), video709, "curves=all='0/0 0.5/0.5 0.8/0.72 1/0.85'"),
      byLuma("lifted-luma", tone, master, x264(20), "S+0.12*pow(1-clip(S\\,0\\,1)\\,4)"),
      byLuma("soft-knee", tone, master, x264(20), "if(lt(S\\,0.6)\\,S\\,0.6+0.55*(S-0.6))"),
      byLuma("crushed-shadows", tone, master, x264(22), "if(lt(S\\,0.4)\\,0.4*pow(clip(S\\,0\\,1)/0.4\\,1.7)\\,S)"),
      byRgb("srgb-to-709", tone, master, proRes(), video709, rgbCurve(encodedAs709("(" + lightOfSrgb + ")"))),
      byRgb("709-to-srgb", tone, master, proRes(), video709, rgbCurve(encodedAsSrgb("(" + lightOf709 + ")"))),
      byRgb("srgb-to-709", tone, pngMaster(), x264(20), video709, rgbCurve(encodedAs709("(" + lightOfSrgb + ")"))),
      byRgb("22-to-709", tone, master, x264(20), video709, rgbCurve(encodedAs709("pow(S\\,2.2)"))),
      byRgb("linear-to-709", tone, master, proRes(), video709, rgbCurve(encodedAs709("S"))),
      bySamples("saturated", tone, master, x264(18), "eq=saturation=1.4"),
      bySamples("pale", tone, master, x264(18), "eq=saturation=0.6"),
      bySamples("cast", tone, master, x264(20), "lutyuv=u=val+3:v=val-2"),
      bySamples("hue", tone, master, x264(20), "hue=h=20"),
      byRgb("warm", tone, master, x264(20), video709, "colorchannelmixer=rr=1.1:bb=0.85"),
  };
  for (Recipe& recipe : all) recipe.needs = Needs::AllTones;
  return all;
}

}  // namespace diagnosis::test
