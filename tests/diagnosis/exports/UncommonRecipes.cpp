#include "tests/diagnosis/exports/Recipe.h"

namespace diagnosis::test {
namespace {

/// What an SMPTE ST 2084 signal stands for, in parts of 10000 cd/m2.
const std::string lightOfPq =
    "pow(max(pow(clip(S\\,0\\,1)\\,1/78.84375)-0.8359375\\,0)/(18.8515625-18.6875*pow(clip(S\\,0\\,1)\\,1/78.84375))\\,"
    "1/0.1593017578125)";

/// Of a display of 1000 cd/m2, as ARIB STD-B67 encodes what its system gamma makes of it.
const std::string pqAsHlg = [] {
  const std::string scene = "pow(10*" + lightOfPq + "\\,1/1.2)";
  return "if(lte(" + scene + "\\,1/12)\\,sqrt(3*" + scene + ")\\,0.17883277*log(max(12*" + scene +
         "-0.28466892\\,0.01))+0.55991073)";
}();

/// What is brighter than 203 cd/m2 is lost.
const std::string pqAsSdr = "pow(clip(" + lightOfPq + "/0.0203\\,0\\,1)\\,1/2.4)";

Recipe taggedAs(Recipe recipe, const std::string& name, const Truth& truth, const Colors& tags) {
  recipe.name = recipe.master.name + "-" + name;
  recipe.truth = truth;
  recipe.tags = tags;
  return recipe;
}

Recipe ofColors(Recipe recipe) {
  recipe.needs = Needs::Colorful;
  return recipe;
}

std::vector<Recipe> ofHighDynamicRange() {
  const Master pq = pqMaster();
  const Truth tone = only(CauseKind::Tone);
  const Recipe x265Right = rightExport("x265", pq, x265Ten(22), pq2020);
  return {
      x265Right,
      rightExport("x265-30", pq, x265Ten(30), pq2020),
      rightExport("prores", pq, proRes(), pq2020),
      changedInRgb("as-hlg", tone, pq, x265Ten(20), hlg2020, rgbCurve(pqAsHlg)),
      changedInRgb("as-sdr", tone, pq, x264(20), video709, rgbCurve(pqAsSdr)),
      changedInRgb("graded", power(1.15), pq, proRes(), pq2020, rgbCurve("pow(clip(S\\,0\\,1)\\,1.15)")),
      ofColors(taggedAs(x265Right, "709-tag", matrix(Where::Tags), video709)),
      taggedAs(x265Right, "hlg-tag", same(), hlg2020),
      taggedAs(x265Right, "sdr-tag", same(), video2020),
  };
}

std::vector<Recipe> inFields() {
  const Master master = interlacedMaster();
  return {
      rightExport("x264", master, x264Interlaced(20), video709, "setfield=tff"),
      rightExport("prores", master, proResInterlaced(), video709, "setfield=tff"),
      rightExport("progressive", master, x264(20), video709, "yadif=deint=all"),
      rightExport("one-field", master, x264(22), video709, "field=top,scale=640:360"),
      rightExport("half-size", master, x264(22), video709, "scale=320:180:interl=1"),
      changedInRgb("progressive-darker", power(1.2), master, x264(20), video709,
                   "yadif=deint=all," + rgbCurve("pow(S\\,1.2)")),
  };
}

std::vector<Recipe> withAlpha() {
  const Master master = alphaMaster(), rgb = alphaRgbMaster();
  return {
      rightExport("prores4444", master, proRes4444Alpha(), video709),
      rightExport("x264", master, x264(20), video709),
      rightExport("animation", rgb, animationAlpha(), rgbColors),
      rightExport("x264", rgb, x264(20), video709),
      changedInRgb("lighter", power(0.85), master, proRes4444(), video709, rgbCurve("pow(S\\,0.85)")),
      changedInRgb("upon-black", only(CauseKind::Tone), rgb, x264(18), video709, "format=gbrap,premultiply=inplace=1"),
  };
}

}  // namespace

std::vector<Recipe> uncommonRecipes() {
  std::vector<Recipe> all;
  for (const auto& part : {ofHighDynamicRange(), inFields(), withAlpha()})
    all.insert(all.end(), part.begin(), part.end());
  return all;
}

}  // namespace diagnosis::test
