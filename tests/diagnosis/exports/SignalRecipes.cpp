#include "tests/diagnosis/exports/Recipe.h"

namespace diagnosis::test {
namespace {

/// Samples converted from one meaning to another one, and tagged as a third.
Recipe mistaken(const std::string& name, const Truth& truth, const Master& master, const Colors& from, const Colors& to,
                const Encoding& encoding, const Colors& tags) {
  Recipe recipe{.name = master.name + "-" + name,
                .master = master,
                .truth = truth,
                .filters = converted(from, to, encoding.format),
                .encoding = encoding,
                .tags = tags};
  if (from.matrix != tags.matrix || to.matrix != tags.matrix || from.matrix != master.colors.matrix) {
    recipe.needs = Needs::Colorful;
  }
  return recipe;
}

/// The same with a filter on R'G'B' between.
Recipe throughRgb(const std::string& name, const Truth& truth, const Master& master, const std::string& filters,
                  const Encoding& encoding, const Colors& to, const Colors& tags) {
  Recipe recipe = mistaken(name, truth, master, master.colors, to, encoding, tags);
  recipe.filters =
      converted(master.colors, rgbColors, rgbFormat) + "," + filters + "," + converted(rgbColors, to, encoding.format);
  return recipe;
}

std::string followedBy(const std::string& filters, const std::string& next) {
  return filters + "," + next;
}

Recipe then(Recipe recipe, const std::string& filters) {
  recipe.filters = followedBy(recipe.filters, filters);
  return recipe;
}

/// The stream as it is, with another range stated in its headers.
Recipe reflagged(const std::string& name, const Master& master, bool full) {
  Colors tags = master.colors;
  tags.full = full;
  return {.name = master.name + "-" + name,
          .master = master,
          .truth = range(full ? Direction::Compressed : Direction::Expanded, Where::Flags),
          .filters = "",
          .encoding = copied(".mp4"),
          .tags = tags,
          .arguments = {"-bsf:v", std::string("h264_metadata=video_full_range_flag=") + (full ? "1" : "0")}};
}

const std::string expandedRgb = "(S*255-16)/219", compressedRgb = "(S*219+16)/255";

}  // namespace

std::vector<Recipe> rangeRecipes() {
  const Truth expanded = range(Direction::Expanded, Where::Codes),
              compressed = range(Direction::Compressed, Where::Codes);
  const Truth flaggedFull = range(Direction::Compressed, Where::Flags),
              flaggedVideo = range(Direction::Expanded, Where::Flags);
  const Truth anyExpanded = range(Direction::Expanded, {}), anyCompressed = range(Direction::Compressed, {});
  const Master master = proResMaster(), full = fullRangeMaster();
  return {
      mistaken("expanded", expanded, master, video709, full709, proRes(), video709),
      mistaken("expanded-x264", expanded, master, video709, full709, x264(20), video709),
      mistaken("expanded-x264-30", expanded, master, video709, full709, x264(30), video709),
      mistaken("expanded-x265", expanded, master, video709, full709, x265(24), video709),
      mistaken("expanded-mpeg4", expanded, h264Master(), video709, full709, mpeg4(4), video709),
      mistaken("expanded", expanded, sdMaster(), video601, full601, x264(20), video601),
      mistaken("compressed", compressed, master, full709, video709, proRes(), video709),
      mistaken("compressed-x264", compressed, master, full709, video709, x264(20), video709),
      mistaken("compressed-x264-30", compressed, master, full709, video709, x264(30), video709),
      mistaken("compressed-twice", compressed, full, full709, video709, x264(20), full709),
      mistaken("compressed", compressed, sdMaster(), full601, video601, x264(22), video601),
      mistaken("flagged-full", flaggedFull, master, video709, video709, x264(20), full709),
      mistaken("flagged-full-crf30", flaggedFull, h264Master(), video709, video709, x264(30), full709),
      mistaken("flagged-full-x265", flaggedFull, master, video709, video709, x265(24), full709),
      mistaken("flagged-video", flaggedVideo, full, full709, full709, x264(20), video709),
      mistaken("flagged-video-x265", flaggedVideo, full, full709, full709, x265(26), video709),
      mistaken("not-flagged", flaggedVideo, full, full709, full709, proRes(), video709),
      reflagged("remux-full", h264Master(), true),
      reflagged("remux-video", full, false),
      throughRgb("rgb-expanded", expanded, master, rgbCurve(expandedRgb), proRes(), video709, video709),
      throughRgb("rgb-compressed", compressed, master, rgbCurve(compressedRgb), x264(20), video709, video709),
      throughRgb("rgb-expanded", expanded, pngMaster(), rgbCurve(expandedRgb), x264(20), video709, video709),
      throughRgb("rgb-compressed", compressed, pngMaster(), rgbCurve(compressedRgb), png(), rgbColors, rgbColors),
      mistaken("as-full", anyExpanded, pngMaster(), rgbColors, full709, x264(20), video709),
      mistaken("as-full-prores", anyExpanded, pngMaster(), rgbColors, full709, proRes(), video709),
      mistaken("as-video", anyCompressed, pngMaster(), rgbColors, video709, x264(20), full709),
      mistaken("as-video", anyCompressed, cineFormRgbMaster(), rgbColors, video709, x264(22), full709),
      mistaken("taken-for-full", anyCompressed, h264Master(), full709, rgbColors, png(), rgbColors),
      mistaken("taken-for-video", anyExpanded, full, video709, rgbColors, png(), rgbColors),
  };
}

std::vector<Recipe> matrixRecipes() {
  const Truth codes = matrix(Where::Codes), tags = matrix(Where::Tags), any = matrix({});
  const Master master = proResMaster();
  return {
      mistaken("601-codes", codes, master, video709, video601, proRes(), video709),
      mistaken("601-codes-x264", codes, master, video709, video601, x264(20), video709),
      mistaken("601-codes-x264-28", codes, h264Master(), video709, video601, x264(28), video709),
      mistaken("709-codes", codes, master, video601, video709, proRes(), video709),
      mistaken("709-codes-x264", codes, sdMaster(), video601, video709, x264(20), video601),
      mistaken("601-codes", codes, fullRangeMaster(), full709, full601, x264(20), full709),
      mistaken("601-tag", tags, master, video709, video709, proRes(), video601),
      mistaken("601-tag-x264", tags, h264Master(), video709, video709, x264(22), video601),
      mistaken("601-tag-x265", tags, master, video709, video709, x265(26), video601),
      mistaken("709-tag", tags, sdMaster(), video601, video601, x264(20), video709),
      mistaken("709-tag-prores", tags, sdMaster(), video601, video601, proRes(), video709),
      mistaken("709-tag", tags, untaggedMaster(), video601, video601, x264(20), video709),
      mistaken("2020-tag", tags, master, video709, video709, x264Ten(20), video2020),
      mistaken("2020-codes", codes, master, video709, video2020, proRes(), video709),
      mistaken("601-codes", any, pngMaster(), rgbColors, video601, x264(20), video709),
      mistaken("709-codes", any, pngMaster(), rgbColors, video709, x264(20), video601),
      mistaken("601-codes-prores", any, cineFormRgbMaster(), rgbColors, video601, proRes(), video709),
      mistaken("taken-for-601", any, h264Master(), video601, rgbColors, png(), rgbColors),
      mistaken("taken-for-709", any, sdMaster(), video709, rgbColors, animation(), rgbColors),
  };
}

std::vector<Recipe> twofoldRecipes() {
  const Truth rangePower = both(CauseKind::Range, CauseKind::Power),
              matrixPower = both(CauseKind::Matrix, CauseKind::Power),
              matrixRange = both(CauseKind::Matrix, CauseKind::Range);
  const Master master = proResMaster();
  const std::string darker = "pow(clip(S\\,0\\,1)\\,1.22)", lighter = "pow(clip(S\\,0\\,1)\\,0.82)";
  const auto luma = [](const std::string& curve) { return lumaCurve("yuv422p10le", false, curve); };
  return {
      then(mistaken("expanded-darker", rangePower, master, video709, full709, proRes(), video709), luma(darker)),
      then(mistaken("compressed-lighter", rangePower, master, full709, video709, proRes(), video709), luma(lighter)),
      throughRgb("darker-flagged-full", rangePower, master, rgbCurve(darker), x264(20), video709, full709),
      throughRgb("lighter-expanded", rangePower, master, rgbCurve(lighter), x264(20), full709, video709),
      throughRgb("darker-as-full", rangePower, pngMaster(), rgbCurve(darker), x264(20), full709, video709),
      throughRgb("lighter-601-codes", matrixPower, master, rgbCurve(lighter), proRes(), video601, video709),
      throughRgb("darker-601-codes", matrixPower, master, rgbCurve(darker), x264(20), video601, video709),
      throughRgb("darker-709-tag", matrixPower, sdMaster(), rgbCurve(darker), x264(20), video601, video709),
      mistaken("expanded-601-codes", matrixRange, master, video709, full601, proRes(), video709),
      mistaken("expanded-601-codes-x264", matrixRange, h264Master(), video709, full601, x264(22), video709),
      mistaken("601-tag-flagged-full", matrixRange, master, video709, video709, x264(20), full601),
      mistaken("as-full-601", matrixRange, pngMaster(), rgbColors, full601, x264(20), video709),
  };
}

}  // namespace diagnosis::test
